#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Qov/Ryx/Tree.h"
#include "mesh/MeshArrays.h"

namespace QovMesh {

/// Where the values of a result sit on a mesh.
enum class Placement : std::uint8_t { Point, Cell, Field };

/// Decides where the values of results sit. A result with as many items as its mesh has points is
/// point data; as cells, cell data. If both counts are equal, the results of the same kind of the
/// whole model decide that have one of the counts only; else it is point data. Any other number of
/// items is field data.
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
