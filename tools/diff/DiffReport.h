#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "ItemNames.h"
#include "compare/Norms.h"
#include "compare/Values.h"
#include "diff/NamedTolerances.h"

namespace Qov::Tools {

/// A difference between two models.
struct ModelDifference {
  /// One of the codes in docs/json/diff.md.
  std::string mCode;
  /// Names from the top of the tree; empty for the whole model.
  std::vector<std::string> mPath;
  std::string mType;  ///< Type of the node.
  std::optional<std::uint32_t> mNodeA;
  std::optional<std::uint32_t> mNodeB;
  std::string mResult;  ///< Name of the result, if a position is given.
  std::optional<std::size_t> mPositionA;
  std::optional<std::size_t> mPositionB;
  std::optional<ValueComparison> mValues;
  std::optional<ItemName> mItem;     ///< The item with the largest difference in A, if requested.
  std::optional<ValueNorms> mNorms;  ///< If requested.
  std::string mText;                 ///< With names, not escaped.
};

struct DiffOptions {
  Tolerances mTolerances;
  std::set<std::string> mIgnored;  ///< Words of kIgnorable.
  bool mNamesIds = false;          ///< Name node and element ids of A instead of positions.
  bool mComputesNorms = false;
  /// The tops of the compared subtrees, whose names can differ; nothing for the whole model.
  std::optional<std::uint32_t> mRootA;
  std::optional<std::uint32_t> mRootB;

  bool ComparesSubtrees() const { return mRootA || mRootB; }
  bool Compares(const char* what) const { return !mIgnored.contains(what); }
};

inline constexpr std::array kIgnorable = {
    "attributes", "flags",   "groups",     "history", "links",   "materials", "node-sets",
    "order",      "streams", "tree-links", "values",  "version", "views"};

struct DiffReport {
  struct Counts {
    std::uint64_t mInBoth = 0;
    std::uint64_t mSame = 0;  ///< Number of equal items in both.
    std::uint64_t mOnlyInA = 0;
    std::uint64_t mOnlyInB = 0;
  };

  std::vector<ModelDifference> mDifferences;
  std::string mIdTrouble;            ///< Why ids could not be read, not escaped; or empty.
  std::uint64_t mNumUnreadable = 0;  ///< Differences that are parts which cannot be read.
  Counts mNodes;
  Counts mResults;  ///< Results of nodes that are in both.
};

}  // namespace Qov::Tools
