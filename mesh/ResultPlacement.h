#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Qov/Ryx/Tree.h"
#include "mesh/MeshArrays.h"

namespace QovMesh {

/// The items that the values of a result belong to.
enum class Placement : std::uint8_t { Point, Cell, Field };

/// Decides what the values of results belong to. A result with as many items as its mesh has points
/// is point data; as cells, cell data. If both counts are equal, those results of the same kind in
/// the whole model decide that fit only one of the counts; else it is point data. A result with any
/// other number of items, or with an incomplete one, is field data.
class PlacementRule {
 public:
  struct Decision {
    Placement mPlacement = Placement::Field;
    std::string mWarning;  ///< Empty if the number of items decides.
  };

  explicit PlacementRule(const QovRyx::NodeTree& nodes);
  Decision Decide(const QovRyx::Geometry::VarStruct& result, const MeshCounts& counts) const;

 private:
  struct Votes {
    std::uint64_t mPoint = 0;
    std::uint64_t mCell = 0;
  };
  std::map<std::uint32_t, Votes> mVotes;  ///< By kind.
};

}  // namespace QovMesh
