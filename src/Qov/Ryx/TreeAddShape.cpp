#include <limits>
#include <memory>
#include <utility>

#include "LinkResolver.h"
#include "Qov/Ryx/Tree.h"
#include "Qov/Util/Raise.h"

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/Tree";
using ErrorType = Qov::Util::Exception::ErrorType;

/// A model file decides what its entries carry, so a wrong one is an error and no broken
/// assumption.
template <class T>
T& RequireNode(const NodeTree::Node& entry, const char* what) {
  auto* node = dynamic_cast<T*>(entry.mData.get());
  if (node == nullptr) {
    Qov::Util::Raise(kSource, ErrorType::MismatchError,
                     "Node " + std::to_string(entry.mId) + " is no " + what);
  }
  return *node;
}

/// The highest id of all stays free, so that there is always a next one.
void RequireFreeIds(const NodeTree& nodes, std::uint32_t count) {
  if (nodes.GetNextId() <= std::numeric_limits<std::uint32_t>::max() - count) return;
  Qov::Util::Raise(kSource, ErrorType::ModelError, "The tree has no ids left");
}

/// What shares the values of another geometry takes them along: the geometry's id means
/// something else in the other tree.
void Unlink(Geometry::VarStruct& variable, LinkResolver& source) {
  const Geometry::VarStruct* target = source.Resolve(variable.mLink);
  if (target != nullptr) variable.mValues = target->mValues;
  variable.mLinked = false;
  variable.mLink = {};
}

/// Links within the geometry, whose id becomes `newId`, lead to the same results as before.
void MoveLinks(Geometry& geometry, std::uint32_t oldId, std::uint32_t newId, LinkResolver source) {
  for (std::size_t i = 0; i != geometry.GetVariables().size(); ++i) {
    Geometry::VarStruct& variable = geometry.EditVariable(i);
    if (!variable.mLinked) continue;
    if (variable.mLink.mNode == oldId) {
      variable.mLink.mNode = newId;
    } else if (!variable.mLeadsNowhere) {
      Unlink(variable, source);
    }
  }
}

}  // namespace

void Tree::AddShape(Tree& source, const std::uint32_t& shapeId, const std::string& groupName) {
  mNodes.MoveToNode(Group(groupName), NodesWithSameName());
  NodeTree::Node& shape = source.mNodes.GetReqNode(shapeId);
  RequireNode<Shape>(shape, "shape");
  NodeTree::Node& child = source.mNodes.GetReqNode(shape.mFirstChild);
  auto& geometry = RequireNode<Geometry>(child, "geometry");
  RequireFreeIds(mNodes, 2);
  MoveLinks(geometry, child.mId, mNodes.GetNextId() + 1, LinkResolver(source.mNodes));
  mNodes.AddChild(std::move(shape.mData));
  mNodes.AddChild(std::move(child.mData));
}

}  // namespace QovRyx
