#include "TreeWalk.h"

namespace Qov::Tools {

using QovRyx::NodeTree;

TreeWalk::TreeWalk(const NodeTree& nodes) : mNodes(nodes), mCandidate(nodes.begin()) {
  const NodeTree::Node& root = mNodes.GetReqNode(NodeTree::kRootId);
  mNextIds.push_back(root.mData ? root.mId : root.mFirstChild);
  if (!root.mData) mSeen.insert(root.mId);
}

std::optional<TreeWalk::Step> TreeWalk::Next() {
  while (!mNextIds.empty() && mNextIds.back() == 0) mNextIds.pop_back();
  if (mNextIds.empty()) return NextAstray();
  return Visit(mNextIds.back());
}

std::optional<TreeWalk::Step> TreeWalk::NextAstray() {
  for (; mCandidate != mNodes.end(); ++mCandidate) {
    if (mSeen.contains(mCandidate->first)) continue;
    mNextIds.push_back(mCandidate->first);
    Step step = Visit(mCandidate->first);
    step.mAstray = true;
    return step;
  }
  return std::nullopt;
}

TreeWalk::Step TreeWalk::Visit(std::uint32_t id) {
  Step step{id, mNextIds.size() - 1, mNodes.FindNode(id), false, false};
  step.mAgain = step.mEntry != nullptr && !mSeen.insert(id).second;
  const bool goOn = step.mEntry != nullptr && !step.mAgain;
  mNextIds.back() = goOn ? step.mEntry->mNextSibling : 0;
  if (goOn) mNextIds.push_back(step.mEntry->mFirstChild);
  return step;
}

}  // namespace Qov::Tools
