#include "mesh/ResultPlacement.h"

#include <fmt/format.h>

#include <optional>

namespace QovMesh {
namespace {

/// Returns where a number of items sits; nothing if both counts fit.
std::optional<Placement> PlaceByCount(std::uint64_t numItems, const MeshCounts& counts) {
  if (numItems == counts.mNumPoints && numItems == counts.mNumCells) return std::nullopt;
  if (numItems == counts.mNumPoints) return Placement::Point;
  return numItems == counts.mNumCells ? Placement::Cell : Placement::Field;
}

}  // namespace

PlacementRule::PlacementRule(const QovRyx::NodeTree& nodes) {
  QovRyx::ForEachGeometry(nodes, [&](std::uint32_t, const QovRyx::Geometry& geometry) {
    const MeshArrays arrays(geometry);
    for (const auto& variable : geometry.GetVariables()) {
      const ArrayName name = SplitName(variable.mName);
      if (IsMeshBase(name.mBase)) continue;
      const auto placement =
          PlaceByCount(CountItems(variable.mValues), arrays.Count(name.mInstance));
      if (placement == Placement::Point) ++mVotes[variable.mKind].mPoint;
      if (placement == Placement::Cell) ++mVotes[variable.mKind].mCell;
    }
  });
}

PlacementRule::Decision PlacementRule::Decide(const QovRyx::Geometry::VarStruct& result,
                                              const MeshCounts& counts) const {
  const std::uint64_t numItems = CountItems(result.mValues);
  const std::optional<Placement> placement = PlaceByCount(numItems, counts);
  if (placement == Placement::Field) {
    return {Placement::Field, fmt::format("{} items for {} points and {} cells: field data",
                                          numItems, counts.mNumPoints, counts.mNumCells)};
  }
  if (placement) return {*placement, {}};
  const auto votes = mVotes.find(result.mKind);
  if (votes != mVotes.end() && votes->second.mCell != votes->second.mPoint) {
    const bool isCell = votes->second.mCell > votes->second.mPoint;
    return {isCell ? Placement::Cell : Placement::Point,
            fmt::format("as many points as cells: {} data, as other results of this kind",
                        isCell ? "cell" : "point")};
  }
  return {Placement::Point, "as many points as cells: point data"};
}

}  // namespace QovMesh
