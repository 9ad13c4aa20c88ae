#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "DroppedResults.h"
#include "Qov/Ryx/Tree.h"
#include "ViewCount.h"

namespace QovRyx {

/// Sets `mLinkReplaced` after all files are merged. Counts the linked results that share another
/// array than when they were loaded and that are not counted otherwise.
void CountReplacedLinks(const Tree& tree, DroppedResults& dropped);

/// Collects the numbers of a merge and writes them to the trace log when the merge is done.
class MergeSummary {
 public:
  void AddInput(const std::string& path);
  /// Counts the nodes of a further file from which only results are taken.
  void AddNodesLeftOut(std::uint64_t n) { mNodesLeftOut += n; }
  /// Counts the views of a further model file.
  void AddViewsLeftOut(const std::string& path);
  DroppedResults& GetDropped() { return mDropped; }

  /// A description of the merge: "Merged " | number of files | " files as datasets".
  struct Operation {
    const char* mBefore;
    std::size_t mNumFiles;
    const char* mAfter;
  };
  /// Writes the summary to the log. `tree` is the model that was written to `output`. Raises no
  /// errors, because the merge has succeeded.
  void Log(const Operation& operation, const Tree& tree, const std::string& output) const noexcept;
  /// Writes one line to standard error if results lost their values because their links are links
  /// to themselves.
  void WarnOfLostValues() const;

 private:
  void LogNodes(const Tree& tree) const;
  void LogResults(const Tree& tree) const;
  void LogViews(const Tree& tree) const;

  std::chrono::steady_clock::time_point mStart = std::chrono::steady_clock::now();
  std::uint64_t mBytesRead = 0;
  std::uint64_t mNodesLeftOut = 0;
  ViewCount mViewsLeftOut;
  std::uint64_t mFilesNotCounted = 0;  ///< Files whose views could not be counted.
  DroppedResults mDropped;
};

}  // namespace QovRyx
