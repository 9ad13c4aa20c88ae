#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "LinkFollower.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Replaces each link for which `isCut(id, target)` is true by the values that the linked result
/// shares; `id` is the id of its geometry. A result gets no values if its chain of links ends at a
/// dangling link or is a cycle. Dangling links stay and are marked, because results of other files
/// can be put at their places later.
template <class IsCut>
void CutLinks(NodeTree& nodes, IsCut isCut) {
  // All links are followed before any is changed, because chains contain results that change.
  std::vector<std::pair<Geometry::VarStruct*, const Geometry::VarStruct*>> cuts;
  LinkFollower follower = FollowLinks(nodes);
  ForEachGeometry(nodes, [&](std::uint32_t id, Geometry& geometry) {
    for (std::size_t i = 0; i != geometry.GetVariables().size(); ++i) {
      Geometry::VarStruct& result = geometry.EditVariable(i);
      if (FindTarget(nodes, result.mLink) == nullptr) result.mLink.LoseTarget();
      if (!result.mLink.HasTarget() || !isCut(id, result.mLink.GetPlace())) continue;
      cuts.emplace_back(&result, follower.FindOwner(result));
    }
  });
  for (const auto& [result, owner] : cuts) {
    result->TakeValuesOf(owner == nullptr ? Geometry::VarStruct() : *owner);
  }
}

/// Replaces all links between geometries by the values.
inline void CutLinksBetweenGeometries(NodeTree& nodes) {
  CutLinks(nodes, [](std::uint32_t id, const ResultPlace& target) { return target.mNode != id; });
}

}  // namespace QovRyx
