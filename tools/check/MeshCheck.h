#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "check/ResultLinks.h"

namespace Qov::Tools {

/// Checks the arrays of meshes against one another, where their names tell what they are. Arrays
/// that are wanted are summarized one at a time by whoever reads them.
class MeshCheck {
 public:
  MeshCheck(const ModelContent& model, ResultLinks& links);

  bool IsWanted(const StoredVariable& variable) const { return mSummaries.contains(&variable); }
  void Summarize(const StoredVariable& variable, const std::vector<std::uint32_t>& values);
  /// For an array of the same values as another one, which was summarized if it could be read.
  void CopySummary(const StoredVariable& source, const StoredVariable& target);
  /// To be called when all arrays that can be read have been.
  void Report(Findings& findings) const;

 private:
  struct Summary {
    bool mIsKnown = false;
    std::uint32_t mLargest = 0;
    std::uint64_t mLargestAt = 0;
    std::uint64_t mSum = 0;
  };
  /// Elements of one geometry; the arrays are those that hold the values. Null if there is none.
  struct Elements {
    const StoredNode* mNode = nullptr;
    std::size_t mPosition = 0;  ///< Of the connectivity in its geometry.
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
