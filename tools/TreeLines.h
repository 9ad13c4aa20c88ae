#pragma once

#include <string>

#include "Terminal.h"
#include "TreeWalk.h"

namespace Qov::Tools {

/// The lines that connect the entries of a drawn tree. Below 32 levels, fewer on a terminal that is
/// less wide, the depth is shown as a number, so that the length of a line is bounded.
class TreeLines {
 public:
  explicit TreeLines(const TextStyle& style);

  /// Returns the text before an entry. `step` is the last one of the walk.
  std::string BeforeEntry(const TreeWalk& walk, const TreeWalk::Step& step) const;
  /// Returns the text before the lines that belong to an entry.
  std::string BeforeContent(const TreeWalk& walk, const TreeWalk::Step& step) const;

 private:
  std::string Passing(const TreeWalk& walk, std::size_t depth) const;

  TextStyle mStyle;
  std::size_t mDeepestDrawn;
};

}  // namespace Qov::Tools
