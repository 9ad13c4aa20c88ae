#include "TreeWalk.h"

namespace Qov::Tools {

using QovRyx::NodeTree;

TreeWalk::TreeWalk(const NodeTree& nodes, const Ids* shown)
    : mNodes(nodes), mpShown(shown), mCandidate(nodes.begin()) {
  const NodeTree::Node& root = mNodes.GetReqNode(NodeTree::kRootId);
  mNextIds.push_back(PassHidden(root.mData ? root.mId : root.mFirstChild));
  if (!root.mData) mSeen.insert(root.mId);
}

std::optional<TreeWalk::Step> TreeWalk::Next() {
  while (!mNextIds.empty() && mNextIds.back() == 0) mNextIds.pop_back();
  if (mNextIds.empty()) return NextUnreached();
  return Visit(mNextIds.back());
}

std::optional<TreeWalk::Step> TreeWalk::NextUnreached() {
  for (; mCandidate != mNodes.end(); ++mCandidate) {
    if (mSeen.contains(mCandidate->first) || IsHidden(mCandidate->first)) continue;
    mNextIds.push_back(mCandidate->first);
    Step step = Visit(mCandidate->first);
    step.mIsUnreached = true;
    return step;
  }
  return std::nullopt;
}

TreeWalk::Step TreeWalk::Visit(std::uint32_t id) {
  Step step{id, mNextIds.size() - 1, mNodes.FindNode(id), false, false};
  step.mAgain = step.mEntry != nullptr && !mSeen.insert(id).second;
  const bool goOn = step.mEntry != nullptr && !step.mAgain;
  mNextIds.back() = goOn ? PassHidden(step.mEntry->mNextSibling) : 0;
  if (goOn) mNextIds.push_back(PassHidden(step.mEntry->mFirstChild));
  return step;
}

/// Returns the first shown sibling from `id` on, or 0. Skips each one once, so that a cycle of
/// siblings ends.
std::uint32_t TreeWalk::PassHidden(std::uint32_t id) {
  while (id != 0 && IsHidden(id)) {
    const NodeTree::Node* entry = mNodes.FindNode(id);
    if (entry == nullptr || !mSeen.insert(id).second) return 0;
    id = entry->mNextSibling;
  }
  return id;
}

}  // namespace Qov::Tools
