#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// The nodes of a model by their paths: names from the top down, with types and positions to tell
/// equal names apart. What the links of a broken tree lead to is part of it.
class PathTree {
 public:
  struct Item {
    std::uint32_t mId = 0;
    /// Null for the top, and for a link that leads to no entry or back to one that was met.
    const QovRyx::NodeTree::Node* mEntry = nullptr;
    std::string mName;
    std::string mType;
    std::size_t mOccurrence = 0;  ///< Among siblings of the same name and type, from 0.
    std::size_t mParent = 0;
    std::vector<std::size_t> mChildren;
    std::size_t mNumDescendants = 0;
    bool mIsUnreached = false;  ///< Not reached by the links that are followed.
  };

  static constexpr std::size_t kTop = 0;

  explicit PathTree(const QovRyx::NodeTree& nodes);

  /// The links of an item that do not agree with the walk, which follows first children and next
  /// siblings only.
  struct BackLinks {
    std::optional<std::uint32_t> mParent;
    std::optional<std::uint32_t> mPreviousSibling;
    std::optional<std::uint32_t> mLastChild;
  };
  BackLinks FindOddLinks(std::size_t item) const;

  /// Parents before children. The first one stands above the whole tree and is no node.
  const std::vector<Item>& GetItems() const { return mItems; }
  std::size_t GetNumNodes() const { return mItems.size() - 1; }
  /// The names from the top to the item; of very deep ones the last few dozen, after "...".
  std::vector<std::string> GetPath(std::size_t item) const;

 private:
  void CountOccurrences();
  void CountDescendants();

  std::vector<Item> mItems;
  std::vector<std::size_t> mPreviousItems;  ///< By item: the sibling before it, or kTop.
};

}  // namespace Qov::Tools
