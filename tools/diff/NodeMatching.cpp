#include "diff/NodeMatching.h"

#include <fmt/format.h>

#include <iterator>
#include <string>

#include "Plural.h"

namespace Qov::Tools {
namespace {

std::string KeyOf(const PathTree::Item& item, bool withName) {
  if (!withName) return item.mType;
  return fmt::format("{}\n{}\n{}", item.mOccurrence, item.mType, item.mName);
}

}  // namespace

NodeMatching::NodeMatching(const QovRyx::NodeTree& a, const QovRyx::NodeTree& b,
                           const DiffOptions& options, DiffReport& report)
    : mTreeA(a, options.mRootA), mTreeB(b, options.mRootB), mOptions(options), mReport(report) {
  std::vector<NodePair> open{{PathTree::kTop, PathTree::kTop}};
  while (!open.empty()) {
    const NodePair pair = open.back();
    open.pop_back();
    if (pair.mItemA != PathTree::kTop) mPairs.push_back(pair);
    MatchChildren(pair, open);
  }
  if (mOptions.Compares("tree-links")) CompareLinks();
  mReport.mNodes.mInBoth = mPairs.size();
  mReport.mNodes.mOnlyInA = mTreeA.GetNumNodes() - mPairs.size();
  mReport.mNodes.mOnlyInB = mTreeB.GetNumNodes() - mPairs.size();
}

void NodeMatching::MatchChildren(const NodePair& parent, std::vector<NodePair>& open) {
  const auto& itemsA = mTreeA.GetItems();
  const auto& itemsB = mTreeB.GetItems();
  // The tops of two subtrees were chosen, so they are matched even if their names differ.
  const bool areChosen = parent.mItemA == PathTree::kTop && mOptions.mRootA && mOptions.mRootB;
  const auto keyOf = [areChosen](const PathTree::Item& item) { return KeyOf(item, !areChosen); };
  std::unordered_map<std::string, std::size_t> childrenOfB;
  for (const std::size_t child : itemsB[parent.mItemB].mChildren) {
    childrenOfB.emplace(keyOf(itemsB[child]), child);
  }
  std::vector<NodePair> matched;
  bool inOrder = true;
  for (const std::size_t child : itemsA[parent.mItemA].mChildren) {
    const auto found = childrenOfB.find(keyOf(itemsA[child]));
    if (found == childrenOfB.end()) {
      ReportOnly(mTreeA, child, true);
      continue;
    }
    inOrder = inOrder && (matched.empty() || matched.back().mItemB < found->second);
    matched.push_back({child, found->second});
    childrenOfB.erase(found);
  }
  for (const std::size_t child : itemsB[parent.mItemB].mChildren) {
    if (childrenOfB.contains(keyOf(itemsB[child]))) ReportOnly(mTreeB, child, false);
  }
  if (!inOrder && mOptions.Compares("order")) ReportOrder(parent);
  open.insert(open.end(), matched.rbegin(), matched.rend());
}

/// Reports a node that only one model has. Counts its descendants instead of listing them.
void NodeMatching::ReportOnly(const PathTree& tree, std::size_t item, bool inA) {
  const PathTree::Item& node = tree.GetItems()[item];
  ModelDifference difference;
  difference.mCode = inA ? "only-in-a" : "only-in-b";
  difference.mPath = tree.GetPath(item);
  difference.mType = node.mType;
  (inA ? difference.mNodeA : difference.mNodeB) = node.mId;
  difference.mText = fmt::format("only in {}", inA ? "A" : "B");
  if (node.mNumDescendants != 0) {
    difference.mText += fmt::format(", with {} below it", Plural(node.mNumDescendants, "node"));
  }
  mReport.mDifferences.push_back(std::move(difference));
}

void NodeMatching::ReportOrder(const NodePair& parent) {
  mReport.mDifferences.push_back(
      MakeDifference(parent, "order", "the order of the nodes below it differs"));
}

/// Compares the links that disagree with the first children and next siblings, along which nodes
/// are matched. In a correct tree these two links determine all others.
void NodeMatching::CompareLinks() {
  for (const NodePair& pair : mPairs) mIdsInB.emplace(GetA(pair).mId, GetB(pair).mId);
  CompareLinks({PathTree::kTop, PathTree::kTop});
  for (const NodePair& pair : mPairs) CompareLinks(pair);
}

void NodeMatching::CompareLinks(const NodePair& pair) {
  const PathTree::BackLinks a = mTreeA.FindOddLinks(pair.mItemA);
  const PathTree::BackLinks b = mTreeB.FindOddLinks(pair.mItemB);
  CompareLink(pair, "parent", a.mParent, b.mParent);
  CompareLink(pair, "previous sibling", a.mPreviousSibling, b.mPreviousSibling);
  CompareLink(pair, "last child", a.mLastChild, b.mLastChild);
}

void NodeMatching::CompareLink(const NodePair& pair, const char* name,
                               std::optional<std::uint32_t> a, std::optional<std::uint32_t> b) {
  if (!a && !b) return;
  const auto inB = a ? mIdsInB.find(*a) : mIdsInB.end();
  if (a && b && *b == (inB == mIdsInB.end() ? *a : inB->second)) return;
  const auto describe = [](const std::optional<std::uint32_t>& link) {
    return link ? fmt::format("is node {}", *link) : "agrees with the other links";
  };
  mReport.mDifferences.push_back(MakeDifference(
      pair, "tree-links",
      fmt::format("the link to the {} {} in A, {} in B", name, describe(a), describe(b))));
}

ModelDifference NodeMatching::MakeDifference(const NodePair& pair, const char* code,
                                             std::string text) const {
  ModelDifference difference;
  difference.mCode = code;
  difference.mText = std::move(text);
  if (pair.mItemA == PathTree::kTop) return difference;
  difference.mPath = mTreeA.GetPath(pair.mItemA);
  difference.mType = GetA(pair).mType;
  difference.mNodeA = GetA(pair).mId;
  difference.mNodeB = GetB(pair).mId;
  return difference;
}

}  // namespace Qov::Tools
