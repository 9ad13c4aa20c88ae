#pragma once

#include <cstdint>
#include <map>
#include <utility>

#include "Qov/Util/Raise.h"

namespace QovAdt {

/// One entry of a Tree: its links, by id, and what it carries. Id 0 means none.
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

/// An ordered tree whose entries are known by id. The root has id 1; ids are never reused.
///
/// One entry is current: adding a child and GetCurrentNode act on it. Iteration is in ascending
/// id order. An unknown id raises ElementNotFound and changes nothing.
template <class T>
class Tree {
 public:
  using Node = TreeNode<T>;
  using NodeMap = std::map<std::uint32_t, Node>;

  static constexpr std::uint32_t kRootId = 1;

  /// A tree of the root alone, without data.
  Tree() { mNodes[kRootId].mId = kRootId; }

  /// Refuses only ids that were never handed out; one without an entry fails in GetCurrentNode.
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
  /// Null when there is no such entry.
  const Node* FindNode(std::uint32_t id) const {
    const auto found = mNodes.find(id);
    return found == mNodes.end() ? nullptr : &found->second;
  }
  Node* FindNode(std::uint32_t id) { return const_cast<Node*>(std::as_const(*this).FindNode(id)); }

  /// Appends a child to the current entry, behind its last one, and makes it current.
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

  /// Puts an entry where its links say, in place of one with the same id. Ids handed out later
  /// are higher.
  Node& PutNode(Node node) {
    const std::uint32_t id = node.mId;
    if (mNextId <= id) mNextId = id + 1;
    return mNodes[id] = std::move(node);
  }

  /// Makes current the entry of lowest id whose data `policy(wanted, data)` accepts.
  template <class Wanted, class Policy>
  void MoveToNode(const Wanted& wanted, Policy policy) {
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
  [[noreturn]] static void RaiseNotFound(unsigned long line = __builtin_LINE()) {
    Qov::Util::Raise("include/Qov/Adt/AdtTree", Qov::Util::Exception::ErrorType::ElementNotFound,
                     line);
  }

  NodeMap mNodes;
  std::uint32_t mNextId = kRootId + 1;
  std::uint32_t mCurrentId = kRootId;
};

}  // namespace QovAdt
