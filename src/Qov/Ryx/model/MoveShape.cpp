#include "MoveShape.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

#include "LinkCuts.h"
#include "Qov/Util/Raise.h"

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/Tree";
using ErrorType = Qov::Util::Exception::ErrorType;

/// Returns the node of an entry. Raises MismatchError for a node of another type. This is not an
/// assertion, because the type comes from a file.
template <class T>
T& RequireNode(NodeTree::Node& entry, const char* what) {
  auto* node = dynamic_cast<T*>(entry.mData.get());
  if (node == nullptr) {
    Qov::Util::Raise(kSource, ErrorType::MismatchError,
                     "Node " + std::to_string(entry.mId) + " is not a " + what);
  }
  return *node;
}

/// Raises ModelError unless `count` ids are free. The highest id of all is never assigned, so that
/// there is always a next one.
void RequireFreeIds(const NodeTree& nodes, std::uint32_t count) {
  if (nodes.GetNextId() <= std::numeric_limits<std::uint32_t>::max() - count) return;
  Qov::Util::Raise(kSource, ErrorType::ModelError, "The tree has no ids left");
}

/// Makes the links within a geometry name its new id. Leaves dangling links unchanged.
void MoveLinks(Geometry& geometry, std::uint32_t newId) {
  for (std::size_t i = 0; i != geometry.GetVariables().size(); ++i) {
    ResultLink& link = geometry.EditVariable(i).mLink;
    link.MoveTo({newId, link.GetPlace().mPosition});
  }
}

}  // namespace

void MoveShape(NodeTree& nodes, NodeTree& source, std::uint32_t shapeId,
               const std::string& groupName, bool cutLinks) {
  nodes.MoveToNode(std::make_unique<Group>(groupName), NodesWithSameName());
  NodeTree::Node& shape = source.GetReqNode(shapeId);
  RequireNode<Shape>(shape, "shape");
  NodeTree::Node& child = source.GetReqNode(shape.mFirstChild);
  auto& geometry = RequireNode<Geometry>(child, "geometry");
  RequireFreeIds(nodes, 2);
  if (cutLinks) {
    CutLinks(source, [moving = child.mId](std::uint32_t id, const ResultPlace& target) {
      return (id == moving) != (target.mNode == moving);
    });
  }
  MoveLinks(geometry, nodes.GetNextId() + 1);
  nodes.AddChild(std::move(shape.mData));
  nodes.AddChild(std::move(child.mData));
}

}  // namespace QovRyx
