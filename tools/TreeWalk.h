#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_set>
#include <vector>

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Walks a model's tree from the top down along its links, parents before children, siblings in
/// order. Every entry is met once and every walk ends, whatever the links of a file say; depth
/// costs memory, not stack.
class TreeWalk {
 public:
  struct Step {
    std::uint32_t mId = 0;
    std::size_t mDepth = 0;
    /// Null if a link names an id without an entry.
    const QovRyx::NodeTree::Node* mEntry = nullptr;
    /// A link leads back to an entry that was met before; it is not followed again.
    bool mAgain = false;
    /// No link that was followed before leads to the entry.
    bool mIsUnreached = false;
  };

  using Ids = std::unordered_set<std::uint32_t>;

  /// With `shown` all entries but those are passed over, and what is beneath them.
  explicit TreeWalk(const QovRyx::NodeTree& nodes, const Ids* shown = nullptr);

  /// The next step; nothing at the end. A root without a node is left out, its children are of
  /// depth 0.
  std::optional<Step> Next();
  /// Whether anything follows at that depth, beneath the same parent, after the last step.
  bool IsOpen(std::size_t depth) const { return depth < mNextIds.size() && mNextIds[depth] != 0; }

 private:
  std::optional<Step> NextUnreached();
  Step Visit(std::uint32_t id);
  bool IsHidden(std::uint32_t id) const { return mpShown != nullptr && !mpShown->contains(id); }
  std::uint32_t PassHidden(std::uint32_t id);

  const QovRyx::NodeTree& mNodes;
  const Ids* mpShown;
  /// By depth: the id to go on with, 0 if there is none.
  std::vector<std::uint32_t> mNextIds;
  Ids mSeen;
  QovRyx::NodeTree::NodeMap::const_iterator mCandidate;
};

}  // namespace Qov::Tools
