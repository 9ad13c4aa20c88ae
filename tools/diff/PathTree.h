#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// The nodes of a model by their paths: names from the top down, with types and positions to
/// distinguish equal names. Includes the missing and repeated nodes of a damaged tree.
class PathTree {
 public:
  struct Item {
    std::uint32_t mId = 0;
    /// Null for the top, for a missing entry and for one that was visited before.
    const QovRyx::NodeTree::Node* mEntry = nullptr;
    std::string mName;
    std::string mType;
    std::size_t mOccurrence = 0;  ///< Position among siblings of the same name and type.
    std::size_t mParent = 0;
    std::vector<std::size_t> mChildren;
    std::size_t mNumDescendants = 0;
    bool mIsUnreached = false;  ///< True if none of the followed links leads to it.
    bool mIsRoot = false;       ///< True for the top of a subtree.
  };

  static constexpr std::size_t kTop = 0;

  /// With `root`, includes only that node and the nodes below it.
  explicit PathTree(const QovRyx::NodeTree& nodes, std::optional<std::uint32_t> root = {});

  /// Links of an item that disagree with the walk along first children and next siblings.
  struct BackLinks {
    std::optional<std::uint32_t> mParent;
    std::optional<std::uint32_t> mPreviousSibling;
    std::optional<std::uint32_t> mLastChild;
  };
  BackLinks FindOddLinks(std::size_t item) const;

  /// Returns the items, parents before children. The first one is above the tree and is not a node.
  const std::vector<Item>& GetItems() const { return mItems; }
  std::size_t GetNumNodes() const { return mItems.size() - 1; }
  /// Returns the names from the top to the item; only the last 40, after "...", if it is deeper.
  std::vector<std::string> GetPath(std::size_t item) const;

 private:
  void AddWalk(const QovRyx::NodeTree& nodes, std::optional<std::uint32_t> root);
  void CountOccurrences();
  void CountDescendants();

  std::vector<Item> mItems;
  std::vector<std::size_t> mPreviousItems;  ///< By item: its previous sibling, or kTop.
};

}  // namespace Qov::Tools
