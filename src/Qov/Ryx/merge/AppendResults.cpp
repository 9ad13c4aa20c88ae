#include <cstddef>
#include <cstdint>
#include <map>

#include "MergeSummary.h"
#include "Qov/Ryx/InstanceNames.h"
#include "Qov/Ryx/RyxMerge.h"
#include "model/GeometryEntries.h"
#include "model/LinkCuts.h"
#include "model/LinkResolver.h"

namespace QovRyx {
namespace {

using Positions = std::map<std::uint32_t, std::uint64_t>;

/// Where the results of each geometry will begin among those of the geometry of its id in `into`.
/// Geometries that are none there are left out.
Positions FindStarts(Tree& from, Tree& into, DroppedResults& dropped) {
  Positions starts;
  ForEachGeometryEntry(from, [&](std::uint32_t id, const Geometry& source) {
    const Geometry* target = AsGeometry(into.GetNodes().GetReqNode(id));
    if (target != nullptr) {
      starts[id] = target->GetVariables().size();
    } else {
      dropped.mWithoutGeometry += source.GetVariables().size();
    }
  });
  return starts;
}

/// Replaces the links to geometries that are not appended by the values.
void CutLinksToOthers(NodeTree& nodes, const Positions& starts) {
  CutLinks(nodes, [&starts](std::uint32_t id, const Geometry::Link& link) {
    return starts.contains(id) && !starts.contains(link.mNode);
  });
}

/// Moves a link, so that it names the same result at its new position. Dangling links are not
/// changed.
void MoveLink(Geometry::VarStruct& result, const Positions& starts) {
  if (!result.mLinked || result.mLeadsNowhere) return;
  result.mLink.mVariable += static_cast<std::uint32_t>(starts.at(result.mLink.mNode));
}

/// Counts the results to be appended that lose their values, because a link within their geometry
/// becomes a link to itself.
std::uint64_t CountLostByLinks(const NodeTree& nodes, const Positions& starts) {
  LinkResolver resolver(nodes);
  std::uint64_t numLost = 0;
  for (const auto& [id, start] : starts) {
    for (const auto& result : AsGeometry(nodes.GetReqNode(id))->GetVariables()) {
      const bool isInner = result.mLinked && !result.mLeadsNowhere && result.mLink.mNode == id;
      if (!isInner || !HasInstancePart(result.mName)) continue;
      if (resolver.Resolve(result.mLink) != nullptr) ++numLost;
    }
  }
  return numLost;
}

/// Makes a link within the geometry name the result's own new position.
void LinkToItself(Geometry::VarStruct& result, std::uint32_t id, std::uint64_t position) {
  if (!result.mLinked || result.mLink.mNode != id) return;
  result.mLink.mVariable = static_cast<std::uint32_t>(position);
  result.mLeadsNowhere = false;
}

}  // namespace

void AppendResults(Tree& from, Tree& into, bool /*appendFlag*/) {
  DroppedResults ignored;
  AppendResults(from, into, ignored);
}

void AppendResults(Tree& from, Tree& into, DroppedResults& dropped) {
  const Positions starts = FindStarts(from, into, dropped);
  CutLinksToOthers(from.GetNodes(), starts);
  for (const auto& [id, start] : starts) {
    Geometry& source = *AsGeometry(from.GetNodes().GetReqNode(id));
    Geometry& target = *AsGeometry(into.GetNodes().GetReqNode(id));
    for (std::size_t i = 0; i != source.GetVariables().size(); ++i) {
      Geometry::VarStruct& result = source.EditVariable(i);
      MoveLink(result, starts);
      target.AppendVariable(result);
    }
  }
}

void AppendOtherInstanceResults(Tree& from, Tree& into) {
  DroppedResults ignored;
  AppendOtherInstanceResults(from, into, ignored);
}

void AppendOtherInstanceResults(Tree& from, Tree& into, DroppedResults& dropped) {
  const Positions starts = FindStarts(from, into, dropped);
  CutLinksBetweenGeometries(from.GetNodes());
  dropped.mLinkedToThemselves += CountLostByLinks(from.GetNodes(), starts);
  for (const auto& [id, start] : starts) {
    Geometry& source = *AsGeometry(from.GetNodes().GetReqNode(id));
    Geometry& target = *AsGeometry(into.GetNodes().GetReqNode(id));
    for (std::size_t i = 0; i != source.GetVariables().size(); ++i) {
      Geometry::VarStruct& result = source.EditVariable(i);
      if (!HasInstancePart(result.mName)) {
        ++dropped.mWithoutInstance;
        continue;
      }
      LinkToItself(result, id, target.GetVariables().size());
      target.AppendVariable(result);
    }
  }
}

}  // namespace QovRyx
