#include "check/TreeLinks.h"

#include <fmt/format.h>

#include <vector>

#include "model/StreamNames.h"

namespace Qov::Tools {
namespace {

constexpr std::uint32_t kRootId = 1;

class LinkChecker {
 public:
  LinkChecker(const ModelContent& model, Findings& findings) : mModel(model), mFindings(findings) {}

  void Run();

 private:
  const StoredNode* Follow(const StoredNode& node, std::uint32_t id, const char* link);
  void CheckParent(const StoredNode& node);
  void CheckSiblings(const StoredNode& node);
  void CheckChildren(const StoredNode& node);
  void CheckCycles();
  void CheckReach();
  void Report(const StoredNode& node, std::string text, const char* code = "tree-link") {
    mFindings.Error(code, node.At(Place::InStream(QovRyx::kRyxTree, node.mPosition)),
                    std::move(text));
  }

  const ModelContent& mModel;
  Findings& mFindings;
};

/// Returns the node of a link; null if it is missing, which is an error unless the link is 0.
const StoredNode* LinkChecker::Follow(const StoredNode& node, std::uint32_t id, const char* link) {
  if (id == 0) return nullptr;
  const StoredNode* target = mModel.Find(id);
  // If the tree was read in part, the rest may contain the node.
  if (target == nullptr && mModel.mIsComplete) {
    Report(node, fmt::format("Its {} should be node {}, which does not exist.", link, id));
  }
  return target;
}

void LinkChecker::CheckParent(const StoredNode& node) {
  if (node.mId == kRootId) {
    if (node.mParent != 0)
      Report(node, fmt::format("The root has a parent, node {}.", node.mParent));
    return;
  }
  if (node.mParent == 0) {
    Report(node, "It has no parent and is not the root.");
    return;
  }
  const StoredNode* parent = Follow(node, node.mParent, "parent");
  if (parent == nullptr) return;
  if (node.mPreviousSibling == 0 && parent->mFirstChild != node.mId) {
    Report(node, fmt::format("It has no sibling before it, but the first child of node {} is {}.",
                             parent->mId, parent->mFirstChild));
  }
  if (node.mNextSibling == 0 && parent->mLastChild != node.mId) {
    Report(node, fmt::format("It has no sibling after it, but the last child of node {} is {}.",
                             parent->mId, parent->mLastChild));
  }
}

void LinkChecker::CheckSiblings(const StoredNode& node) {
  const StoredNode* next = Follow(node, node.mNextSibling, "next sibling");
  if (next != nullptr && next->mPreviousSibling != node.mId) {
    Report(node, fmt::format("Its next sibling is node {}, whose previous sibling is {}.",
                             next->mId, next->mPreviousSibling));
  }
  if (next != nullptr && next->mParent != node.mParent) {
    Report(node, fmt::format("It is a child of node {}, its next sibling, {}, of node {}.",
                             node.mParent, next->mId, next->mParent));
  }
  const StoredNode* previous = Follow(node, node.mPreviousSibling, "previous sibling");
  if (previous != nullptr && previous->mNextSibling != node.mId) {
    Report(node, fmt::format("Its previous sibling is node {}, whose next sibling is {}.",
                             previous->mId, previous->mNextSibling));
  }
}

void LinkChecker::CheckChildren(const StoredNode& node) {
  const StoredNode* first = Follow(node, node.mFirstChild, "first child");
  const StoredNode* last = Follow(node, node.mLastChild, "last child");
  if ((node.mFirstChild == 0) != (node.mLastChild == 0)) {
    Report(node, fmt::format("Its first child is {} and its last one {}.", node.mFirstChild,
                             node.mLastChild));
  }
  if (first != nullptr && (first->mParent != node.mId || first->mPreviousSibling != 0)) {
    Report(node, fmt::format("Its first child is node {}, of parent {} and previous sibling {}.",
                             first->mId, first->mParent, first->mPreviousSibling));
  }
  if (last != nullptr && last != first && (last->mParent != node.mId || last->mNextSibling != 0)) {
    Report(node, fmt::format("Its last child is node {}, of parent {} and next sibling {}.",
                             last->mId, last->mParent, last->mNextSibling));
  }
}

/// Follows the parents of every node up to a visited one.
void LinkChecker::CheckCycles() {
  std::vector<std::size_t> visits(mModel.mNodes.size(), 0);  // the start from which it was visited
  for (std::size_t start = 0; start < mModel.mNodes.size(); ++start) {
    std::size_t at = start;
    while (visits[at] == 0) {
      visits[at] = start + 1;
      const auto parent = mModel.mPositions.find(mModel.mNodes[at].mParent);
      if (parent == mModel.mPositions.end()) break;
      at = parent->second;
      if (visits[at] != start + 1) continue;
      Report(mModel.mNodes[at],
             "It is its own ancestor, because the links to the parents form a cycle.",
             "tree-circle");
      break;
    }
  }
}

/// Follows first children and next siblings from the root.
void LinkChecker::CheckReach() {
  std::vector<bool> isReached(mModel.mNodes.size());
  std::vector<std::uint32_t> open{kRootId};
  while (!open.empty()) {
    const auto found = mModel.mPositions.find(open.back());
    open.pop_back();
    if (found == mModel.mPositions.end() || isReached[found->second]) continue;
    isReached[found->second] = true;
    const StoredNode& node = mModel.mNodes[found->second];
    open.push_back(node.mNextSibling);
    open.push_back(node.mFirstChild);
  }
  for (std::size_t i = 0; i < isReached.size(); ++i) {
    if (!isReached[i])
      Report(mModel.mNodes[i], "It is not reached by links from the root.", "tree-reach");
  }
}

void LinkChecker::Run() {
  for (const StoredNode& node : mModel.mNodes) {
    CheckParent(node);
    CheckSiblings(node);
    CheckChildren(node);
  }
  CheckCycles();
  if (mModel.mIsComplete) CheckReach();
}

}  // namespace

void CheckTreeLinks(const ModelContent& model, Findings& findings) {
  LinkChecker(model, findings).Run();
}

}  // namespace Qov::Tools
