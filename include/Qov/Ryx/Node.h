#pragma once

#include <concepts>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "Qov/Export.h"
#include "Qov/Ryx/Attributes.h"

namespace QovRyx {

/// The content of an entry of a model's tree. The type and the version are written to the file and
/// tell readers the layout of the rest. The entry owns its node. A node does not move in memory, so
/// a pointer to it is valid until it is taken out of the tree.
class QOV_EXPORT Node {
 public:
  static constexpr const char* kVersion = "0.1";

  explicit Node(std::string name) : mName(std::move(name)) {}
  virtual ~Node() = default;
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  virtual std::string GetType() const { return "Node"; }
  virtual std::string GetVersion() const { return kVersion; }

  const std::string& GetName() const { return mName; }
  void SetName(std::string name) { mName = std::move(name); }

 private:
  std::string mName;
};

/// A node of a type that this version does not know. Only its name is kept.
class QOV_EXPORT FutureNode : public Node {
 public:
  static constexpr const char* kType = "FutureNode";

  using Node::Node;
  std::string GetType() const override { return kType; }

  QovUtil::Attributes mAttributes;  ///< For programs; not stored in files.
};

/// Owns a node, or is null. A const pointer gives access to a const node only, so that a const tree
/// hands out const nodes.
class NodePointer {
 public:
  NodePointer() = default;
  NodePointer(std::nullptr_t) {}  // NOLINT(google-explicit-constructor): as std::unique_ptr
  template <std::derived_from<Node> T>
  NodePointer(std::unique_ptr<T> node)  // NOLINT(google-explicit-constructor): as std::unique_ptr
      : mpNode(std::move(node)) {}

  Node* get() { return mpNode.get(); }
  const Node* get() const { return mpNode.get(); }
  Node& operator*() { return *mpNode; }
  const Node& operator*() const { return *mpNode; }
  Node* operator->() { return get(); }
  const Node* operator->() const { return get(); }

  explicit operator bool() const { return mpNode != nullptr; }
  friend bool operator==(const NodePointer& pointer, std::nullptr_t) { return !pointer; }

 private:
  std::unique_ptr<Node> mpNode;
};

/// Accepts nodes of the same name, type and version (for QovAdt::Tree::MoveToNode).
struct NodesWithSameName {
  bool operator()(const NodePointer& wanted, const NodePointer& candidate) const {
    return wanted->GetName() == candidate->GetName() && wanted->GetType() == candidate->GetType() &&
           wanted->GetVersion() == candidate->GetVersion();
  }
};

}  // namespace QovRyx
