#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "Qov/Util/Raise.h"

namespace QovAdt {

/// One entry of a Tree: its links to other entries, by id, and its data. Id 0 means no entry.
template <class T>
struct TreeNode {
  std::uint32_t mId = 0;
  std::uint32_t mParent = 0;
  std::uint32_t mPreviousSibling = 0;
  std::uint32_t mNextSibling = 0;
  std::uint32_t mFirstChild = 0;
  std::uint32_t mLastChild = 0;
  T mData{};
};

/// An ordered tree whose entries are identified by id. The root has id 1. Ids are never reused.
///
/// One entry is current: AddChild and GetCurrentNode act on it. Iteration is in ascending order of
/// ids. An unknown id raises ElementNotFound and changes nothing.
template <class T>
class Tree {
 public:
  using Node = TreeNode<T>;
  using NodeMap = std::map<std::uint32_t, Node>;

  static constexpr std::uint32_t kRootId = 1;

  /// Makes a tree that consists of a root without data.
  Tree() { mNodes[kRootId].mId = kRootId; }

  /// Makes an entry current. Raises ElementNotFound for an id that was never assigned. For other
  /// ids without an entry, GetCurrentNode raises it.
  void SetCurrentId(std::uint32_t id) {
    if (id >= mNextId) RaiseNotFound();
    mCurrentId = id;
  }
  std::uint32_t GetCurrentId() const { return mCurrentId; }
  std::uint32_t GetNextId() const { return mNextId; }

  Node& GetCurrentNode() { return GetReqNode(mCurrentId); }
  Node& GetReqNode(const std::uint32_t& id) {
    return const_cast<Node&>(std::as_const(*this).GetReqNode(id));
  }
  const Node& GetReqNode(const std::uint32_t& id) const {
    const Node* node = FindNode(id);
    if (node == nullptr) RaiseNotFound();
    return *node;
  }
  /// Returns null if there is no such entry.
  const Node* FindNode(std::uint32_t id) const {
    const auto found = mNodes.find(id);
    return found == mNodes.end() ? nullptr : &found->second;
  }
  Node* FindNode(std::uint32_t id) { return const_cast<Node*>(std::as_const(*this).FindNode(id)); }

  /// Appends a child to the current entry, after its last one, and makes the child current.
  Node& AddChild(T data) {
    Node& parent = GetCurrentNode();
    Node* last = parent.mLastChild == 0 ? nullptr : &GetReqNode(parent.mLastChild);
    const std::uint32_t id = mNextId++;
    Node& child = mNodes[id];
    child.mId = id;
    child.mParent = mCurrentId;
    child.mPreviousSibling = parent.mLastChild;
    child.mData = std::move(data);
    (last == nullptr ? parent.mFirstChild : last->mNextSibling) = id;
    parent.mLastChild = id;
    mCurrentId = id;
    return child;
  }

  /// Enters an entry with its links as they are, and replaces one with the same id. Ids assigned
  /// later are higher.
  Node& PutNode(Node node) {
    const std::uint32_t id = node.mId;
    if (mNextId <= id) mNextId = id + 1;
    return mNodes[id] = std::move(node);
  }

  /// Returns these ids and those of all entries below them. Raises ElementNotFound for an unknown
  /// id. Follows links to children only if these name the entry as their parent, so that it ends
  /// even if the links of a file contain cycles. Never returns the root as an entry below others.
  std::set<std::uint32_t> GetSubtrees(const std::set<std::uint32_t>& ids) const {
    for (const std::uint32_t id : ids) GetReqNode(id);
    std::set<std::uint32_t> all = ids;
    std::set<std::uint32_t> children{kRootId};
    std::vector<std::uint32_t> open(ids.begin(), ids.end());
    while (!open.empty()) {
      const std::uint32_t id = open.back();
      open.pop_back();
      const Node* child = FindNode(GetReqNode(id).mFirstChild);
      while (child != nullptr && child->mParent == id && children.insert(child->mId).second) {
        if (all.insert(child->mId).second) open.push_back(child->mId);
        child = FindNode(child->mNextSibling);
      }
    }
    return all;
  }

  /// Removes an entry and everything below it (GetSubtrees). Its siblings become neighbours. If the
  /// current entry is removed, the root becomes current. Raises InvalidMethod for the root.
  void RemoveNode(std::uint32_t id) {
    const std::set<std::uint32_t> ids = GetSubtrees({id});
    if (id == kRootId) {
      Qov::Util::Raise(kSource, Qov::Util::Exception::ErrorType::InvalidMethod,
                       "The root of a tree cannot be removed");
    }
    Unlink(GetReqNode(id));
    for (const std::uint32_t removed : ids) {
      if (mCurrentId == removed) mCurrentId = kRootId;
      mNodes.erase(removed);
    }
  }

  /// Makes current the entry of the lowest id for which `policy(wanted, data)` is true. Raises
  /// ElementNotFound if there is none.
  template <class Policy>
  void MoveToNode(const T& wanted, Policy policy) {
    for (const auto& [id, node] : mNodes) {
      if (node.mData && policy(wanted, node.mData)) {
        mCurrentId = id;
        return;
      }
    }
    RaiseNotFound();
  }

  std::size_t GetSize() const { return mNodes.size(); }
  typename NodeMap::iterator begin() { return mNodes.begin(); }
  typename NodeMap::iterator end() { return mNodes.end(); }
  typename NodeMap::const_iterator begin() const { return mNodes.begin(); }
  typename NodeMap::const_iterator end() const { return mNodes.end(); }

 private:
  static constexpr const char* kSource = "include/Qov/Adt/AdtTree";

  [[noreturn]] static void RaiseNotFound(unsigned long line = __builtin_LINE()) {
    Qov::Util::Raise(kSource, Qov::Util::Exception::ErrorType::ElementNotFound, line);
  }

  /// Makes the entries around `node` name its neighbours instead.
  void Unlink(const Node& node) {
    const auto replace = [id = node.mId](std::uint32_t& link, std::uint32_t neighbour) {
      if (link == id) link = neighbour;
    };
    const std::uint32_t previous = node.mPreviousSibling;
    const std::uint32_t next = node.mNextSibling;
    if (Node* entry = FindNode(previous)) replace(entry->mNextSibling, next);
    if (Node* entry = FindNode(next)) replace(entry->mPreviousSibling, previous);
    if (Node* entry = FindNode(node.mParent)) {
      replace(entry->mFirstChild, next);
      replace(entry->mLastChild, previous);
    }
  }

  NodeMap mNodes;
  std::uint32_t mNextId = kRootId + 1;
  std::uint32_t mCurrentId = kRootId;
};

}  // namespace QovAdt
