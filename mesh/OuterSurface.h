#pragma once

#include <cstdint>
#include <vector>

#include "mesh/Mesh.h"

namespace QovMesh {

/// The visible cells of a mesh: the faces of solid cells that one cell alone has and the cells that
/// are faces themselves, as triangles; and the lines.
struct Surface {
  std::vector<std::uint32_t> mTriangles;      ///< Three points of the mesh for each triangle.
  std::vector<std::uint32_t> mTriangleCells;  ///< The cell that each triangle belongs to.
  /// Bits 0, 1 and 2 of each triangle: the edge from its first, second or third point to the next
  /// is an edge of a face. The other edges are diagonals of a face.
  std::vector<std::uint8_t> mTriangleEdges;
  std::vector<std::uint32_t> mLines;  ///< Two points of the mesh for each line.
  std::vector<std::uint32_t> mLineCells;
  /// Polygons whose triangles may not cover them exactly (TriangulatePolygon).
  std::uint64_t mNumDoubtfulPolygons = 0;
};

/// Finds the outer surface. Two faces are the same if they have the same corners in any order. The
/// triangles of solid cells face outward. Nodes on the edges of quadratic cells are used. Concave
/// quads and polygons keep their shape. Raises
/// OutOfBounds for more than 2^32 - 1 cells or faces.
Surface FindOuterSurface(const Mesh& mesh);

}  // namespace QovMesh
