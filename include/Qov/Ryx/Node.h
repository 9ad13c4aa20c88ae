#pragma once

#include <string>
#include <utility>

#include "Qov/Export.h"
#include "Qov/Ryx/Attributes.h"

namespace QovRyx {

/// What an entry of a model's tree carries. The type and version are written to the file, and
/// reading goes by them. The entry owns its node; neither moves while the other lives, so that
/// pointers to a node stay good until it is taken out of the tree.
class QOV_EXPORT Node {
 public:
  explicit Node(std::string name) : mName(std::move(name)) {}
  virtual ~Node() = default;
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  virtual std::string GetType() const { return "Node"; }
  virtual std::string GetVersion() const { return "0.1"; }

  const std::string& GetName() const { return mName; }

 private:
  std::string mName;
};

/// A node of a type that this version does not know. Its name is kept.
class QOV_EXPORT FutureNode : public Node {
 public:
  using Node::Node;
  std::string GetType() const override { return "FutureNode"; }

  QovUtil::Attributes mAttributes;  ///< For programs; files have no place for them.
};

/// Accepts nodes of the same name, type and version (for QovAdt::Tree::MoveToNode).
struct NodesWithSameName {
  template <class NodePointer>
  bool operator()(const Node& wanted, const NodePointer& candidate) const {
    return wanted.GetName() == candidate->GetName() && wanted.GetType() == candidate->GetType() &&
           wanted.GetVersion() == candidate->GetVersion();
  }
};

}  // namespace QovRyx
