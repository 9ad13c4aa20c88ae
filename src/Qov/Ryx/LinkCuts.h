#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "LinkResolver.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Gives the values that it shares to each linked result for which `isCut(id, link)` is true, where
/// `id` is that of its geometry. A result whose chain of links breaks off or is a circle gets no
/// values. A dangling link stays and is noted as one, because results of other files may come to
/// stand at its place.
template <class IsCut>
void CutLinks(const NodeTree& nodes, IsCut isCut) {
  // All are resolved before one is changed, because the chains lead over results that change.
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

/// Cuts all links from one geometry to another one.
inline void CutLinksBetweenGeometries(const NodeTree& nodes) {
  CutLinks(nodes, [](std::uint32_t id, const Geometry::Link& link) { return link.mNode != id; });
}

}  // namespace QovRyx
