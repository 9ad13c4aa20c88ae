#include "TreeLines.h"

#include <fmt/format.h>

#include <algorithm>

namespace Qov::Tools {
namespace {

constexpr std::size_t kDeepestDrawn = 32;
constexpr const char* kBlank = "    ";
constexpr std::size_t kBlankWidth = 4;
/// Columns of a terminal that the lines leave to the entries.
constexpr std::size_t kRoomForEntries = 44;

std::size_t FindDeepestDrawn(const TextStyle& style) {
  if (!style.mTerminal) return kDeepestDrawn;
  const std::size_t room = std::max<std::size_t>(style.mWidth, kRoomForEntries) - kRoomForEntries;
  return std::clamp<std::size_t>(room / kBlankWidth, 1, kDeepestDrawn);
}

}  // namespace

TreeLines::TreeLines(const TextStyle& style)
    : mStyle(style), mDeepestDrawn(FindDeepestDrawn(style)) {}

std::string TreeLines::BeforeEntry(const TreeWalk& walk, const TreeWalk::Step& step) const {
  if (step.mDepth > mDeepestDrawn) {
    return Passing(walk, mDeepestDrawn) + fmt::format("[level {}] ", step.mDepth + 1);
  }
  const char* more = mStyle.mUtf8 ? "├── " : "|-- ";
  const char* last = mStyle.mUtf8 ? "└── " : "`-- ";
  return Passing(walk, step.mDepth) + (walk.IsOpen(step.mDepth) ? more : last);
}

std::string TreeLines::BeforeContent(const TreeWalk& walk, const TreeWalk::Step& step) const {
  if (step.mDepth > mDeepestDrawn) return Passing(walk, mDeepestDrawn) + kBlank;
  const bool hasChildren = walk.IsOpen(step.mDepth + 1);
  return Passing(walk, step.mDepth + (hasChildren ? 2 : 1)) + (hasChildren ? "" : "  ");
}

/// Returns the lines of the levels above on which more entries follow.
std::string TreeLines::Passing(const TreeWalk& walk, std::size_t depth) const {
  const char* line = mStyle.mUtf8 ? "│   " : "|   ";
  std::string text;
  for (std::size_t i = 0; i < depth; ++i) text += walk.IsOpen(i) ? line : kBlank;
  return text;
}

}  // namespace Qov::Tools
