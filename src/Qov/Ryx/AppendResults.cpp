#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "GeometryEntries.h"
#include "Qov/Ryx/InstanceNames.h"
#include "Qov/Ryx/RyxMerge.h"

namespace QovRyx {
namespace {

/// A position that no link can name becomes the highest one, at which no result ever stands.
std::uint32_t AsLinkPosition(std::uint64_t position) {
  constexpr std::uint64_t kHighest = std::numeric_limits<std::uint32_t>::max();
  return static_cast<std::uint32_t>(std::min(position, kHighest));
}

/// Calls `append(source, target)` for each geometry of `from` and the one of its id in `into`.
template <class Append>
void ForEachTarget(Tree& from, Tree& into, Append append) {
  ForEachGeometryEntry(from, [&](std::uint32_t id, Geometry& source) {
    Geometry* target = AsGeometry(into.GetNodes().GetReqNode(id));
    if (target != nullptr) append(source, *target);
  });
}

}  // namespace

void AppendResults(Tree& from, Tree& into, bool /*appendFlag*/) {
  ForEachTarget(from, into, [](Geometry& source, Geometry& target) {
    const std::uint64_t base = target.GetVariables().size();
    for (std::size_t i = 0; i != source.GetVariables().size(); ++i) {
      Geometry::VarStruct& result = source.EditVariable(i);
      if (result.mLinked) result.mLink.mVariable = AsLinkPosition(result.mLink.mVariable + base);
      target.AppendVariable(result);
    }
  });
}

void AppendOtherInstanceResults(Tree& from, Tree& into) {
  ForEachTarget(from, into, [](Geometry& source, Geometry& target) {
    for (std::size_t i = 0; i != source.GetVariables().size(); ++i) {
      Geometry::VarStruct& result = source.EditVariable(i);
      if (!HasInstancePart(result.mName)) continue;
      if (result.mLinked) result.mLink.mVariable = AsLinkPosition(target.GetVariables().size());
      target.AppendVariable(result);
    }
  });
}

}  // namespace QovRyx
