#pragma once

#include <string>

#include "Terminal.h"
#include "TreeWalk.h"

namespace Qov::Tools {

/// The lines that join the entries of a drawn tree. Beyond a few dozen levels the depth is told
/// by a number, so that a line's length stays bounded.
class TreeLines {
 public:
  explicit TreeLines(const TextStyle& style) : mStyle(style) {}

  /// What stands in front of an entry. `step` is the walk's last one.
  std::string BeforeEntry(const TreeWalk& walk, const TreeWalk::Step& step) const;
  /// What stands in front of the lines that belong to an entry.
  std::string BeforeContent(const TreeWalk& walk, const TreeWalk::Step& step) const;

 private:
  std::string Passing(const TreeWalk& walk, std::size_t depth) const;

  TextStyle mStyle;
};

}  // namespace Qov::Tools
