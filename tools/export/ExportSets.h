#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "export/ExportContent.h"

namespace Qov::Tools {

/// A node set as it is written.
struct ExportSet {
  std::string mName;
  std::vector<std::uint32_t> mNumbers;
  /// All numbers are ids of nodes of the parts that the set belongs to, so that it can be written
  /// as a mask of their points. Else the numbers are written as they are.
  bool mIsMask = false;
};

/// The chosen node sets of all parts of an export. Keeps the sets of one NodeSets node at a time.
class ExportSets {
 public:
  ExportSets(const QovRyx::Tree& tree, const ExportContent& content)
      : mTree(tree), mContent(content) {}

  /// Returns the sets of a part. Sets that are not masks are returned only for the first part that
  /// they belong to. Raises the errors of NodeSets::GetSets.
  std::vector<ExportSet> Load(const ExportPart& part);
  /// Frees the numbers that are kept.
  void Clear();

 private:
  /// Properties of the sets of a NodeSets node without their numbers.
  struct Verdict {
    std::vector<bool> mIsMask;
    std::uint32_t mFirstPart = 0;  ///< Tree id.
  };
  const std::vector<QovRyx::NodeSets::Set>& LoadNode(std::uint32_t id);
  const Verdict& Judge(std::uint32_t id);

  const QovRyx::Tree& mTree;
  const ExportContent& mContent;
  std::map<std::uint32_t, Verdict> mVerdicts;  ///< By id of the NodeSets.
  std::uint32_t mLoadedId = 0;                 ///< Of the NodeSets whose sets are in mLoaded.
  std::vector<QovRyx::NodeSets::Set> mLoaded;
};

}  // namespace Qov::Tools
