#include "mesh/ResultPlacement.h"

#include <fmt/format.h>

#include <optional>

namespace QovMesh {
namespace {

/// Returns false if the last item lacks some of its elements.
bool HasWholeItems(const QovRyx::NumericArray& values) {
  return values.GetWidth() == 0 || values.GetNumElements() % values.GetWidth() == 0;
}

/// Returns where an array belongs; nothing if both counts fit.
std::optional<Placement> PlaceByCount(const QovRyx::NumericArray& values,
                                      const MeshCounts& counts) {
  const std::uint64_t numItems = CountItems(values);
  if (!HasWholeItems(values)) return Placement::Field;
  if (numItems == counts.mNumPoints && numItems == counts.mNumCells) return std::nullopt;
  if (numItems == counts.mNumPoints) return Placement::Point;
  return numItems == counts.mNumCells ? Placement::Cell : Placement::Field;
}

}  // namespace

PlacementRule::PlacementRule(const QovRyx::NodeTree& nodes) {
  QovRyx::ForEachGeometry(nodes, [&](std::uint32_t, const QovRyx::Geometry& geometry) {
    const MeshArrays arrays(geometry);
    for (const auto& variable : geometry.GetVariables()) {
      const QovRyx::ArrayName name = QovRyx::SplitName(variable.mName);
      if (QovRyx::IsMeshBase(name.mBase)) continue;
      const auto placement = PlaceByCount(variable.mValues, arrays.Count(name.mInstance));
      if (placement == Placement::Point) ++mVotes[variable.mKind].mPoint;
      if (placement == Placement::Cell) ++mVotes[variable.mKind].mCell;
    }
  });
}

PlacementRule::Decision PlacementRule::Decide(const QovRyx::Geometry::VarStruct& result,
                                              const MeshCounts& counts) const {
  const std::optional<Placement> placement = PlaceByCount(result.mValues, counts);
  if (!HasWholeItems(result.mValues)) {
    return {Placement::Field,
            fmt::format("{} values are not a whole number of items of {}: field data",
                        result.mValues.GetNumElements(), result.mValues.GetWidth())};
  }
  if (placement == Placement::Field) {
    return {Placement::Field,
            fmt::format("{} items for {} points and {} cells: field data",
                        CountItems(result.mValues), counts.mNumPoints, counts.mNumCells)};
  }
  if (placement) return {*placement, {}};
  const auto votes = mVotes.find(result.mKind);
  if (votes != mVotes.end() && votes->second.mCell != votes->second.mPoint) {
    const bool isCell = votes->second.mCell > votes->second.mPoint;
    return {isCell ? Placement::Cell : Placement::Point,
            fmt::format("as many points as cells: {} data, like other results of this kind",
                        isCell ? "cell" : "point")};
  }
  return {Placement::Point, "as many points as cells: point data"};
}

}  // namespace QovMesh
