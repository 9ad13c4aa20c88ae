#include "AppendResults.h"

#include <cstddef>
#include <cstdint>
#include <map>

#include "Qov/Ryx/InstanceNames.h"
#include "model/GeometryEntries.h"
#include "model/LinkCuts.h"
#include "model/LinkFollower.h"

namespace QovRyx {
namespace {

using Positions = std::map<std::uint32_t, std::uint64_t>;

/// Returns, for each geometry of `from`, the position in `into` where its results will begin.
/// Leaves out geometries whose node in `into` is not a geometry, and counts their results.
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
  CutLinks(nodes, [&starts](std::uint32_t id, const ResultPlace& target) {
    return starts.contains(id) && !starts.contains(target.mNode);
  });
}

/// Makes a link name the same result at its new position. Dangling links are not changed.
void MoveLink(ResultLink& link, const Positions& starts) {
  if (!link.HasTarget()) return;
  const auto [node, position] = link.GetPlace();
  link.MoveTo({node, position + static_cast<std::uint32_t>(starts.at(node))});
}

/// Counts the results to be appended that lose their values, because a link within their geometry
/// becomes a link to itself.
std::uint64_t CountLostByLinks(const NodeTree& nodes, const Positions& starts) {
  LinkFollower follower = FollowLinks(nodes);
  std::uint64_t numLost = 0;
  for (const auto& [id, start] : starts) {
    for (const auto& result : AsGeometry(nodes.GetReqNode(id))->GetVariables()) {
      const bool isInner = result.mLink.HasTarget() && result.mLink.GetPlace().mNode == id;
      if (!isInner || !HasInstancePart(result.mName)) continue;
      if (follower.FindOwner(result) != nullptr) ++numLost;
    }
  }
  return numLost;
}

/// Makes a link within the geometry name the result's own new position.
void LinkToItself(ResultLink& link, std::uint32_t id, std::uint64_t position) {
  if (!link.IsLinked() || link.GetPlace().mNode != id) return;
  link = ResultLink({id, static_cast<std::uint32_t>(position)});
}

}  // namespace

void AppendResults(Tree& from, Tree& into, DroppedResults& dropped) {
  const Positions starts = FindStarts(from, into, dropped);
  CutLinksToOthers(from.GetNodes(), starts);
  for (const auto& [id, start] : starts) {
    Geometry& source = *AsGeometry(from.GetNodes().GetReqNode(id));
    Geometry& target = *AsGeometry(into.GetNodes().GetReqNode(id));
    for (std::size_t i = 0; i != source.GetVariables().size(); ++i) {
      Geometry::VarStruct& result = source.EditVariable(i);
      MoveLink(result.mLink, starts);
      target.AppendVariable(result);
    }
  }
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
      LinkToItself(result.mLink, id, target.GetVariables().size());
      target.AppendVariable(result);
    }
  }
}

}  // namespace QovRyx
