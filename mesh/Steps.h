#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Qov/Ryx/Tree.h"

namespace QovMesh {

/// A time step or a load case of a model.
struct Step {
  std::string mName;            ///< The instance part of names, or "time 0.5".
  std::optional<double> mTime;  ///< In the unit of the model.
  std::string mSource;          ///< Where the time comes from, or why there is none.
};

/// The steps of a model. A result belongs to the step of the instance part of its name. A result
/// without one belongs to the step of its time: the attribute "time" of the nearest group above it,
/// or else its own. Other results belong to every step.
///
/// The time of an instance is the attribute "time" of one of its results, else it is read from its
/// name (ParseTime).
class StepTable {
 public:
  explicit StepTable(const QovRyx::NodeTree& nodes);

  /// By time if all steps have one, else in the order in which the model names them.
  const std::vector<Step>& GetSteps() const { return mSteps; }
  /// Returns the position of the step that a result belongs to; nothing if it belongs to all.
  std::optional<std::size_t> FindStep(std::uint32_t geometry,
                                      const QovRyx::Geometry::VarStruct& result) const;
  /// Results of one step that disagree about its time; the first one was taken.
  const std::vector<std::string>& GetWarnings() const { return mWarnings; }

 private:
  void AddGeometry(std::uint32_t id, const QovRyx::Geometry& geometry,
                   const std::optional<double>& groupTime);
  std::size_t GetOrAdd(const std::string& name);
  void NoteTime(std::size_t step, double time, const std::string& source);
  void Sort();

  std::vector<Step> mSteps;
  std::map<std::string, std::size_t, std::less<>> mPositions;
  std::map<std::uint32_t, double> mGroupTimes;  ///< By id of the geometry.
  std::vector<std::string> mWarnings;
};

/// Reads a time from the name of an instance: "T=0.5", "time 2e-3", "12.5s", "300 ms", "step 7". A
/// number without a word or a unit is not a time.
std::optional<double> ParseTime(std::string_view name);

}  // namespace QovMesh
