#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>

#include "GeometryEntries.h"
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

/// Gives a result the values that it shared so far, for good.
void Unlink(Geometry::VarStruct& result) {
  result.mLinked = false;
  result.mLink = {};
}

/// Lets a link lead to the same result as before, at its new position. One that led nowhere
/// stays as it is.
void MoveLink(Geometry::VarStruct& result, const Positions& starts) {
  if (!result.mLinked || result.mLeadsNowhere) return;
  const auto start = starts.find(result.mLink.mNode);
  if (start == starts.end()) {
    Unlink(result);
    return;
  }
  const std::uint64_t position = start->second + result.mLink.mVariable;
  if (position <= std::numeric_limits<std::uint32_t>::max()) {
    result.mLink.mVariable = static_cast<std::uint32_t>(position);
  }
}

/// A link within a geometry becomes one to its own new position. The result that it led to may
/// have stayed behind. One to another geometry would name a stranger there.
void LinkToItself(Geometry::VarStruct& result, std::uint32_t id, std::uint64_t position) {
  if (result.mLink.mNode == id) {
    result.mLink.mVariable = static_cast<std::uint32_t>(position);
  } else if (!result.mLeadsNowhere) {
    Unlink(result);
  }
}

}  // namespace

void AppendResults(Tree& from, Tree& into, bool /*appendFlag*/) {
  DroppedResults ignored;
  AppendResults(from, into, ignored);
}

void AppendResults(Tree& from, Tree& into, DroppedResults& dropped) {
  const Positions starts = FindStarts(from, into, dropped);
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
  for (const auto& [id, start] : FindStarts(from, into, dropped)) {
    Geometry& source = *AsGeometry(from.GetNodes().GetReqNode(id));
    Geometry& target = *AsGeometry(into.GetNodes().GetReqNode(id));
    for (std::size_t i = 0; i != source.GetVariables().size(); ++i) {
      Geometry::VarStruct& result = source.EditVariable(i);
      if (!HasInstancePart(result.mName)) {
        ++dropped.mWithoutInstance;
        continue;
      }
      if (result.mLinked) LinkToItself(result, id, target.GetVariables().size());
      target.AppendVariable(result);
    }
  }
}

}  // namespace QovRyx
