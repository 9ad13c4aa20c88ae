#include "diff/PathTree.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_map>

#include "TreeWalk.h"
#include "diagnostics/Utf8.h"

namespace Qov::Tools {
namespace {

PathTree::Item MakeItem(const TreeWalk::Step& step) {
  PathTree::Item item;
  item.mId = step.mId;
  if (step.mEntry == nullptr) {
    item.mType = "missing node";
  } else if (step.mAgain) {
    item.mType = "node again";
  } else {
    item.mEntry = step.mEntry;
    const QovRyx::Node* node = step.mEntry->mData.get();
    item.mType = node == nullptr ? "without content" : node->GetType();
    item.mName = node == nullptr ? "" : node->GetName();
  }
  item.mIsUnreached = step.mIsUnreached;
  if (step.mIsUnreached) item.mType += ", not reached by any link";
  return item;
}

}  // namespace

PathTree::PathTree(const QovRyx::NodeTree& nodes, std::optional<std::uint32_t> root) {
  mItems.emplace_back();
  const QovRyx::NodeTree::Node& top = nodes.GetReqNode(QovRyx::NodeTree::kRootId);
  if (!top.mData && !root) {
    mItems.back().mId = top.mId;
    mItems.back().mEntry = &top;
  }
  mPreviousItems.push_back(kTop);
  AddWalk(nodes, root);
  CountOccurrences();
  CountDescendants();
}

void PathTree::AddWalk(const QovRyx::NodeTree& nodes, std::optional<std::uint32_t> root) {
  std::vector<std::size_t> path{kTop};  // by depth, which is one more than that of the walk
  std::optional<std::size_t> rootDepth = root ? std::nullopt : std::optional<std::size_t>(0);
  TreeWalk walk(nodes);
  while (const auto step = walk.Next()) {
    const bool isRoot = !rootDepth && step->mId == root && step->mEntry != nullptr;
    if (isRoot) rootDepth = step->mDepth;
    if (!rootDepth) continue;
    if (root && !isRoot && step->mDepth <= *rootDepth) break;
    path.resize(step->mDepth - *rootDepth + 1);
    Item item = MakeItem(*step);
    item.mIsRoot = isRoot;
    item.mParent = path.back();
    auto& siblings = mItems[item.mParent].mChildren;
    mPreviousItems.push_back(siblings.empty() ? kTop : siblings.back());
    siblings.push_back(mItems.size());
    path.push_back(mItems.size());
    mItems.push_back(std::move(item));
  }
}

void PathTree::CountOccurrences() {
  for (const Item& parent : mItems) {
    std::unordered_map<std::string, std::size_t> counts;
    for (const std::size_t child : parent.mChildren) {
      mItems[child].mOccurrence = counts[mItems[child].mType + '\0' + mItems[child].mName]++;
    }
  }
}

void PathTree::CountDescendants() {
  for (std::size_t i = mItems.size(); --i > 0;) {
    mItems[mItems[i].mParent].mNumDescendants += mItems[i].mNumDescendants + 1;
  }
}

PathTree::BackLinks PathTree::FindOddLinks(std::size_t item) const {
  BackLinks odd;
  const Item& node = mItems[item];
  if (node.mEntry == nullptr) return odd;
  const auto note = [](std::uint32_t link, std::uint32_t expected, auto& oddLink) {
    if (link != expected) oddLink = link;
  };
  const bool hasPrevious = item != kTop && mPreviousItems[item] != kTop && !node.mIsUnreached;
  const bool hasParent = item != kTop && !node.mIsUnreached;
  if (!node.mIsRoot) {
    note(node.mEntry->mParent, hasParent ? mItems[node.mParent].mId : 0, odd.mParent);
    note(node.mEntry->mPreviousSibling, hasPrevious ? mItems[mPreviousItems[item]].mId : 0,
         odd.mPreviousSibling);
  }
  const auto isReached = [this](std::size_t child) { return !mItems[child].mIsUnreached; };
  const auto last = std::find_if(node.mChildren.rbegin(), node.mChildren.rend(), isReached);
  note(node.mEntry->mLastChild, last == node.mChildren.rend() ? 0 : mItems[*last].mId,
       odd.mLastChild);
  return odd;
}

std::vector<std::string> PathTree::GetPath(std::size_t item) const {
  constexpr std::size_t kMostNames = 40;
  constexpr std::size_t kMostBytes = 1000;
  std::vector<std::string> path;
  std::size_t numBytes = 0;
  for (; item != kTop && path.size() < kMostNames && numBytes < kMostBytes;
       item = mItems[item].mParent) {
    const std::size_t occurrence = mItems[item].mOccurrence;
    const std::string mark = occurrence == 0 ? "" : fmt::format("[{}]", occurrence + 1);
    path.push_back(Shortened(mItems[item].mName) + mark);
    numBytes += path.back().size();
  }
  if (item != kTop) path.emplace_back("...");
  std::reverse(path.begin(), path.end());
  return path;
}

}  // namespace Qov::Tools
