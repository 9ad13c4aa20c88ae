#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "check/ResultLinks.h"

namespace Qov::Tools {

/// Compares the arrays of meshes, which are recognised by their names. The reader of the arrays
/// calls Summarize for each one that IsWanted.
class MeshCheck {
 public:
  MeshCheck(const ModelContent& model, ResultLinks& links);

  bool IsWanted(const StoredVariable& variable) const { return mSummaries.contains(&variable); }
  void Summarize(const StoredVariable& variable, const std::vector<std::uint32_t>& values);
  /// Copies the summary, if any, of an array with the same values.
  void CopySummary(const StoredVariable& source, const StoredVariable& target);
  /// Reports the findings, after all readable arrays were summarized.
  void Report(Findings& findings) const;

 private:
  struct Summary {
    bool mIsKnown = false;
    std::uint32_t mLargest = 0;
    std::uint64_t mLargestAt = 0;
    std::uint64_t mSum = 0;
  };
  /// Elements of a geometry. The arrays are those with the values; null if missing.
  struct Elements {
    const StoredNode* mNode = nullptr;
    std::size_t mPosition = 0;  ///< Position of the connectivity in its geometry.
    const StoredVariable* mConnectivity = nullptr;
    const StoredVariable* mCoordinates = nullptr;
    const StoredVariable* mLengths = nullptr;
  };

  void Add(const StoredNode& node, ResultLinks& links);
  void ReportElements(const Elements& elements, Findings& findings) const;
  const Summary* FindSummary(const StoredVariable* variable) const;

  std::vector<Elements> mElements;
  std::unordered_map<const StoredVariable*, Summary> mSummaries;
};

}  // namespace Qov::Tools
