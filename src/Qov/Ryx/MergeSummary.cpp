#include "MergeSummary.h"

#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <exception>

#include "MergeSteps.h"
#include "Qov/Log/Record.h"

namespace QovRyx {
namespace {

/// 0 for what is not there.
std::uint64_t FileSize(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

std::string SecondsSince(std::chrono::steady_clock::time_point start) {
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.2f s", passed.count());
  return text.data();
}

/// " (3 without an instance part, 2 of ...)", naming only rules that kept something out.
std::string DescribeRules(const DroppedResults& dropped) {
  std::string text;
  const auto add = [&text](std::uint64_t n, const char* rule) {
    if (n != 0) text += (text.empty() ? "" : ", ") + std::to_string(n) + rule;
  };
  add(dropped.mWithoutInstance, " without an instance part");
  add(dropped.mWithoutGeometry, " of nodes that are no geometries in the first file");
  add(dropped.mReplaced, " replaced by shared ones of their names");
  return text.empty() ? text : " (" + text + ")";
}

}  // namespace

void MergeSummary::AddInput(const std::string& path) { mBytesRead += FileSize(path); }

void MergeSummary::Tell(const Deed& deed, const Tree& tree,
                        const std::string& output) const noexcept {
  try {
    Qov::Log::Trace(kMergeSource) << deed.mBefore << deed.mNumFiles << deed.mAfter << " in "
                                  << SecondsSince(mStart);
    TellNodes(tree);
    TellResults(tree);
    Qov::Log::Trace(kMergeSource) << "Bytes: " << mBytesRead << " read, " << FileSize(output)
                                  << " written";
  } catch (const std::exception&) {
    // There is no memory for a line of the log.
  }
}

void MergeSummary::TellNodes(const Tree& tree) const {
  Qov::Log::Trace(kMergeSource) << "Nodes: " << tree.GetNodes().GetSize() << " written, "
                                << mNodesLeftOut << " of further files left out";
}

void MergeSummary::TellResults(const Tree& tree) const {
  std::uint64_t numCopied = 0;
  std::uint64_t numLinked = 0;
  ForEachGeometry(tree.GetNodes(), [&](std::uint32_t, const Geometry& geometry) {
    for (const Geometry::VarStruct& variable : geometry.GetVariables()) {
      ++(variable.mLinked ? numLinked : numCopied);
    }
  });
  Qov::Log::Trace(kMergeSource) << "Results: " << numCopied << " copied, " << numLinked
                                << " linked, " << mDropped.GetTotal() << " dropped"
                                << DescribeRules(mDropped);
}

}  // namespace QovRyx
