#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "Qov/Ryx/InstanceNames.h"
#include "Qov/Ryx/Tree.h"
#include "ViewCount.h"

namespace QovRyx {

/// Results that a merge did not take or keep, by the rule that kept them out.
struct DroppedResults {
  std::uint64_t mWithoutInstance = 0;  ///< The name has no instance part.
  std::uint64_t mWithoutGeometry = 0;  ///< The first file's node of that id is no geometry.
  std::uint64_t mReplaced = 0;         ///< The values gave way to those of a shared result.
  /// Results without values, because automatic renaming made their links lead to themselves.
  std::uint64_t mLinkedToThemselves = 0;
  /// Results that share other values than before, because the result that they are linked to does.
  std::uint64_t mLinkReplaced = 0;

  std::uint64_t GetTotal() const {
    return mWithoutInstance + mWithoutGeometry + mReplaced + mLinkedToThemselves + mLinkReplaced;
  }
};

/// What the functions of the same names in RyxMerge.h and InstanceNames.h do, and what they
/// dropped.
void AppendResults(Tree& from, Tree& into, DroppedResults& dropped);
void AppendOtherInstanceResults(Tree& from, Tree& into, DroppedResults& dropped);
void GenerateLinkedResults(Tree& tree, const PartLinksMap& links, DroppedResults& dropped);

/// Sets `mLinkReplaced` after all files are merged. Counts the linked results that share another
/// array than when they were loaded and that are not counted otherwise.
void CountReplacedLinks(const Tree& tree, DroppedResults& dropped);

/// Notes what goes into a merge and, once it is done, tells in the trace log what came of it.
class MergeSummary {
 public:
  void AddInput(const std::string& path);
  /// Of a further file of which only results are taken.
  void AddNodesLeftOut(std::uint64_t n) { mNodesLeftOut += n; }
  /// Counts the views of a further model file.
  void AddViewsLeftOut(const std::string& path);
  DroppedResults& GetDropped() { return mDropped; }

  /// What was done: "Merged " | number of files | " files as datasets".
  struct Deed {
    const char* mBefore;
    std::size_t mNumFiles;
    const char* mAfter;
  };
  /// `tree` is what was written. The merge is done, so nothing that goes wrong here is an error.
  void Tell(const Deed& deed, const Tree& tree, const std::string& output) const noexcept;
  /// Writes one line to standard error if results lost their values because their links lead to
  /// themselves.
  void WarnOfLostValues() const;

 private:
  void TellNodes(const Tree& tree) const;
  void TellResults(const Tree& tree) const;
  void TellViews(const Tree& tree) const;

  std::chrono::steady_clock::time_point mStart = std::chrono::steady_clock::now();
  std::uint64_t mBytesRead = 0;
  std::uint64_t mNodesLeftOut = 0;
  ViewCount mViewsLeftOut;
  std::uint64_t mFilesNotCounted = 0;  ///< Files whose views could not be counted.
  DroppedResults mDropped;
};

}  // namespace QovRyx
