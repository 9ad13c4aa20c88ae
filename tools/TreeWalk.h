#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_set>
#include <vector>

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Walks the tree of a model along its links: parents before children, siblings in order. Visits
/// every entry once and always ends, even if the links of the file contain cycles. Uses no stack
/// for the depth.
class TreeWalk {
 public:
  struct Step {
    std::uint32_t mId = 0;
    std::size_t mDepth = 0;
    /// Null if a link names an id without an entry.
    const QovRyx::NodeTree::Node* mEntry = nullptr;
    /// True if the entry was visited before. It is not followed again.
    bool mAgain = false;
    /// True if none of the followed links leads to the entry.
    bool mIsUnreached = false;
  };

  using Ids = std::unordered_set<std::uint32_t>;

  /// If `shown` is given, skips all other entries with their descendants.
  explicit TreeWalk(const QovRyx::NodeTree& nodes, const Ids* shown = nullptr);

  /// Returns the next step, or nothing at the end. A root without a node is left out; its children
  /// have depth 0.
  std::optional<Step> Next();
  /// Returns true if the last step has a further sibling at that depth.
  bool IsOpen(std::size_t depth) const { return depth < mNextIds.size() && mNextIds[depth] != 0; }

 private:
  std::optional<Step> NextUnreached();
  Step Visit(std::uint32_t id);
  bool IsHidden(std::uint32_t id) const { return mpShown != nullptr && !mpShown->contains(id); }
  std::uint32_t PassHidden(std::uint32_t id);

  const QovRyx::NodeTree& mNodes;
  const Ids* mpShown;
  /// By depth: the next id, or 0.
  std::vector<std::uint32_t> mNextIds;
  Ids mSeen;
  QovRyx::NodeTree::NodeMap::const_iterator mCandidate;
};

}  // namespace Qov::Tools
