#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "LinkResolver.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Replaces each link for which `isCut(id, link)` is true by the values that the linked result
/// shares; `id` is the id of its geometry. A result gets no values if its chain of links ends at a
/// dangling link or is a cycle. Dangling links stay and are marked, because results of other files
/// may be put at their places later.
template <class IsCut>
void CutLinks(NodeTree& nodes, IsCut isCut) {
  // All links are resolved before any is changed, because chains lead over results that change.
  std::vector<std::pair<Geometry::VarStruct*, const Geometry::VarStruct*>> cuts;
  LinkResolver resolver(nodes);
  ForEachGeometry(nodes, [&](std::uint32_t id, Geometry& geometry) {
    for (std::size_t i = 0; i != geometry.GetVariables().size(); ++i) {
      Geometry::VarStruct& result = geometry.EditVariable(i);
      if (!result.mLinked) continue;
      result.mLeadsNowhere = result.mLeadsNowhere || FindVariable(nodes, result.mLink) == nullptr;
      if (result.mLeadsNowhere || !isCut(id, result.mLink)) continue;
      cuts.emplace_back(&result, resolver.Resolve(result.mLink));
    }
  });
  for (const auto& [result, owner] : cuts) {
    result->TakeValuesOf(owner == nullptr ? Geometry::VarStruct() : *owner);
  }
}

/// Replaces all links between geometries by the values.
inline void CutLinksBetweenGeometries(NodeTree& nodes) {
  CutLinks(nodes, [](std::uint32_t id, const Geometry::Link& link) { return link.mNode != id; });
}

}  // namespace QovRyx
