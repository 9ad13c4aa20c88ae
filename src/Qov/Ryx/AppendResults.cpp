#include <cstddef>
#include <cstdint>
#include <map>

#include "GeometryEntries.h"
#include "LinkCuts.h"
#include "LinkResolver.h"
#include "MergeSummary.h"
#include "Qov/Ryx/InstanceNames.h"
#include "Qov/Ryx/RyxMerge.h"

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

/// Returns whether the link names no result. Notes it in the result, because the results of other
/// files may come to stand at that place.
bool NoteDangling(Geometry::VarStruct& result, const NodeTree& nodes) {
  result.mLeadsNowhere = result.mLeadsNowhere || FindVariable(nodes, result.mLink) == nullptr;
  return result.mLeadsNowhere;
}

/// Calls `visit(id, result)` for each linked result of the geometries that have a start.
template <class Visitor>
void ForEachLinked(Tree& from, const Positions& starts, Visitor visit) {
  for (const auto& [id, start] : starts) {
    Geometry& source = *AsGeometry(from.GetNodes().GetReqNode(id));
    for (std::size_t i = 0; i != source.GetVariables().size(); ++i) {
      Geometry::VarStruct& result = source.EditVariable(i);
      if (result.mLinked) visit(id, result);
    }
  }
}

/// Gives the values to each result whose link names one of a geometry that stays behind.
void CutLinksToOthers(Tree& from, const Positions& starts) {
  LinkResolver resolver(from.GetNodes());
  LinkCuts cuts;
  ForEachLinked(from, starts, [&](std::uint32_t, Geometry::VarStruct& result) {
    if (NoteDangling(result, from.GetNodes()) || starts.contains(result.mLink.mNode)) return;
    cuts.Add(result, resolver.Resolve(result.mLink));
  });
  cuts.Apply();
}

/// Gives the values to each result that is linked to another geometry: what is at the same place
/// in the target is another result.
void CutLinksBetweenGeometries(Tree& from, const Positions& starts) {
  LinkResolver resolver(from.GetNodes());
  LinkCuts cuts;
  ForEachLinked(from, starts, [&](std::uint32_t id, Geometry::VarStruct& result) {
    if (result.mLink.mNode == id || NoteDangling(result, from.GetNodes())) return;
    cuts.Add(result, resolver.Resolve(result.mLink));
  });
  cuts.Apply();
}

/// Lets a link name the same result as before, at its new position. A dangling link stays as it is.
void MoveLink(Geometry::VarStruct& result, const Positions& starts) {
  if (!result.mLinked || result.mLeadsNowhere) return;
  result.mLink.mVariable += static_cast<std::uint32_t>(starts.at(result.mLink.mNode));
}

/// Lets a link within the geometry name its own new position.
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
  CutLinksToOthers(from, starts);
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
  CutLinksBetweenGeometries(from, starts);
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
