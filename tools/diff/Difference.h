#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "compare/Values.h"
#include "diff/NamedTolerances.h"

namespace Qov::Tools {

/// One thing in which two models differ.
struct ModelDifference {
  /// What kind of thing, of the words that docs/json/diff.md lists.
  std::string mCode;
  /// Names from the top of the tree; empty for what belongs to the model as a whole.
  std::vector<std::string> mPath;
  std::string mType;  ///< Of the node.
  std::optional<std::uint32_t> mNodeA;
  std::optional<std::uint32_t> mNodeB;
  std::string mResult;  ///< Its name, if a position is given.
  std::optional<std::size_t> mPositionA;
  std::optional<std::size_t> mPositionB;
  std::optional<ValueComparison> mValues;
  std::string mText;  ///< Names in it are not escaped.
};

struct DiffOptions {
  Tolerances mTolerances;
  std::set<std::string> mIgnored;  ///< Some of kIgnorable.

  bool Compares(const char* what) const { return !mIgnored.contains(what); }
};

inline constexpr std::array kIgnorable = {
    "attributes", "flags",   "groups",     "history", "links",   "materials", "node-sets",
    "order",      "streams", "tree-links", "values",  "version", "views"};

struct DiffReport {
  struct Counts {
    std::uint64_t mInBoth = 0;
    std::uint64_t mSame = 0;  ///< Of those in both.
    std::uint64_t mOnlyInA = 0;
    std::uint64_t mOnlyInB = 0;
  };

  std::vector<ModelDifference> mDifferences;
  bool mIsComplete = true;  ///< False if a part of a file could not be read, and so not compared.
  Counts mNodes;
  Counts mResults;  ///< Of nodes that are in both.
};

}  // namespace Qov::Tools
