#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

#include "LinkCuts.h"
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

/// Gives the values to each result whose link leads into the geometry of id `moving` or out of it,
/// because the ids mean something else in the other tree. Links to nowhere stay as they are.
void CutLinksAcross(const NodeTree& nodes, std::uint32_t moving) {
  LinkResolver resolver(nodes);
  LinkCuts cuts;
  ForEachGeometry(nodes, [&](std::uint32_t id, Geometry& geometry) {
    for (std::size_t i = 0; i != geometry.GetVariables().size(); ++i) {
      Geometry::VarStruct& result = geometry.EditVariable(i);
      if (!result.mLinked || (result.mLink.mNode == moving) == (id == moving)) continue;
      if (result.mLeadsNowhere || FindVariable(nodes, result.mLink) == nullptr) continue;
      cuts.Add(result, resolver.Resolve(result.mLink));
    }
  });
  cuts.Apply();
}

/// Lets the links within a geometry of `nodes` name its new id. A dangling link keeps its numbers
/// and is noted as one: they may name a result of the other tree.
void MoveLinks(const NodeTree& nodes, Geometry& geometry, std::uint32_t newId) {
  for (std::size_t i = 0; i != geometry.GetVariables().size(); ++i) {
    Geometry::VarStruct& result = geometry.EditVariable(i);
    if (!result.mLinked) continue;
    result.mLeadsNowhere = result.mLeadsNowhere || FindVariable(nodes, result.mLink) == nullptr;
    if (!result.mLeadsNowhere) result.mLink.mNode = newId;
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
  CutLinksAcross(source.mNodes, child.mId);
  MoveLinks(source.mNodes, geometry, mNodes.GetNextId() + 1);
  mNodes.AddChild(std::move(shape.mData));
  mNodes.AddChild(std::move(child.mData));
}

}  // namespace QovRyx
