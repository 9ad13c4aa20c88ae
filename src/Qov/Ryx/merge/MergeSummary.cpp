#include "MergeSummary.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <exception>

#include "MergeSteps.h"
#include "Qov/Log/Record.h"
#include "container/FileAccess.h"
#include "model/LinkFollower.h"

namespace QovRyx {
namespace {

std::string SecondsSince(std::chrono::steady_clock::time_point start) {
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), passed.count(),
                                 std::chars_format::fixed, 2);
  return std::string(text.data(), end.ptr) + " s";
}

/// Returns the number with its noun: "1 path", "2 paths".
std::string Counted(std::uint64_t n, const std::string& noun) {
  return std::to_string(n) + " " + noun + (n == 1 ? "" : "s");
}

/// Returns a list of the rules that dropped results: " (3 without an instance part, 2 of ...)".
std::string DescribeRules(const DroppedResults& dropped) {
  std::string text;
  const auto add = [&text](std::uint64_t n, const char* rule) {
    if (n != 0) text += (text.empty() ? "" : ", ") + std::to_string(n) + rule;
  };
  add(dropped.mWithoutInstance, " without an instance part");
  add(dropped.mWithoutGeometry, " of nodes that are no geometries in the first file");
  add(dropped.mReplaced, " replaced by shared ones of their names");
  add(dropped.mLinkReplaced, " linked to results that were replaced");
  add(dropped.mLinkedToThemselves, " linked to themselves");
  return text.empty() ? text : " (" + text + ")";
}

}  // namespace

void CountReplacedLinks(const Tree& tree, DroppedResults& dropped) {
  LinkFollower follower = FollowLinks(tree.GetNodes());
  std::uint64_t numChanged = 0;
  ForEachGeometry(tree.GetNodes(), [&](std::uint32_t, const Geometry& geometry) {
    for (const Geometry::VarStruct& result : geometry.GetVariables()) {
      const DataLoader* before = result.mValues.GetLoader().get();
      if (!result.mLink.IsLinked() || before == nullptr) continue;
      const Geometry::VarStruct* owner = follower.FindOwner(result);
      if (owner == nullptr || owner->mValues.GetLoader().get() != before) ++numChanged;
    }
  });
  const std::uint64_t numCounted = dropped.mReplaced + dropped.mLinkedToThemselves;
  dropped.mLinkReplaced = numChanged - std::min(numChanged, numCounted);
}

void MergeSummary::AddInput(const std::string& path) { mBytesRead += QovJbf::GetFileSize(path); }

void MergeSummary::AddViewsLeftOut(const std::string& path) {
  const std::optional<ViewCount> views = CountViews(path);
  if (!views) {
    ++mFilesNotCounted;
    return;
  }
  mViewsLeftOut.mCurrentViews += views->mCurrentViews;
  mViewsLeftOut.mPaths += views->mPaths;
  mViewsLeftOut.mViewPoints += views->mViewPoints;
}

void MergeSummary::Log(const Operation& operation, const Tree& tree,
                       const std::string& output) const noexcept {
  try {
    Qov::Log::Trace(kMergeSource) << operation.mBefore << operation.mNumFiles << operation.mAfter
                                  << " in " << SecondsSince(mStart);
    LogNodes(tree);
    LogResults(tree);
    LogViews(tree);
    Qov::Log::Trace(kMergeSource) << "Bytes: " << mBytesRead << " read, "
                                  << QovJbf::GetFileSize(output) << " written";
  } catch (const std::exception&) {
    // There is not enough memory for a log line.
  }
}

void MergeSummary::WarnOfLostValues() const {
  const std::uint64_t n = mDropped.mLinkedToThemselves;
  if (n == 0) return;
  std::cerr << n << (n == 1 ? " result has" : " results have")
            << " lost the values: --auto-rename-instances replaces a link within a geometry by a "
               "link to itself. Use --suffix-file-instance to keep the values."
            << std::endl;
}

void MergeSummary::LogNodes(const Tree& tree) const {
  Qov::Log::Trace(kMergeSource) << "Nodes: " << tree.GetNodes().GetSize() << " written, "
                                << mNodesLeftOut << " of further files left out";
}

void MergeSummary::LogViews(const Tree& tree) const {
  std::uint64_t numViewPoints = 0;
  for (const ViewPointPath& path : tree.GetViewPointPaths()) {
    numViewPoints += path.mViewPoints.size();
  }
  Qov::Log::Record line = Qov::Log::Trace(kMergeSource);
  line << "Views: " << Counted(tree.GetViewPointPaths().size(), "path") << " with "
       << Counted(numViewPoints, "view point") << " written, "
       << Counted(mViewsLeftOut.mCurrentViews, "current view") << " and "
       << Counted(mViewsLeftOut.mPaths, "path") << " with "
       << Counted(mViewsLeftOut.mViewPoints, "view point") << " of further files left out";
  if (mFilesNotCounted != 0) {
    line << ", those of " << Counted(mFilesNotCounted, "file") << " not counted";
  }
}

void MergeSummary::LogResults(const Tree& tree) const {
  std::uint64_t numCopied = 0;
  std::uint64_t numLinked = 0;
  ForEachGeometry(tree.GetNodes(), [&](std::uint32_t, const Geometry& geometry) {
    for (const Geometry::VarStruct& variable : geometry.GetVariables()) {
      ++(variable.mLink.IsLinked() ? numLinked : numCopied);
    }
  });
  DroppedResults dropped = mDropped;
  CountReplacedLinks(tree, dropped);
  Qov::Log::Trace(kMergeSource) << "Results: " << numCopied << " copied, " << numLinked
                                << " linked, " << dropped.GetTotal() << " dropped"
                                << DescribeRules(dropped);
}

}  // namespace QovRyx
