#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace QovMesh {

/// The kinds of cells that a mesh is made of. A quadratic kind has the corners of its linear kind
/// first, then one node for each edge.
enum class CellKind : std::uint8_t {
  Empty,
  Vertex,
  Points,
  Line,
  Triangle,
  Quad,
  Polygon,
  Tetrahedron,
  Pyramid,
  Wedge,
  Hexahedron,
  QuadraticLine,
  QuadraticTriangle,
  QuadraticQuad,
  QuadraticTetrahedron,
  QuadraticPyramid,
  QuadraticWedge,
  QuadraticHexahedron,
};
inline constexpr std::size_t kNumCellKinds = 18;

/// Two corners of a cell.
using CellEdge = std::array<std::uint8_t, 2>;

/// A face of a solid cell: three or four of its corners, in order round the face.
struct CellFace {
  std::uint8_t mNumCorners;
  std::array<std::uint8_t, 4> mCorners;
};

/// Properties of a kind of cells.
struct CellShape {
  std::string_view mName;            ///< In messages and options: "quadratic-hexahedron".
  std::uint8_t mVtkType;             ///< Cell type number in VTK files.
  std::uint8_t mDimension;           ///< 0 for points, 1 for lines, 2 for faces, 3 for solids.
  std::uint8_t mNumCorners;          ///< Corners without the nodes on edges; 0 if it varies.
  std::uint8_t mNumNodes;            ///< All nodes; 0 if it varies.
  std::span<const CellEdge> mEdges;  ///< Edge i of a quadratic kind has node mNumCorners + i.
  std::span<const CellFace> mFaces;  ///< Of a solid cell.

  bool IsQuadratic() const { return mNumNodes > mNumCorners; }
};

const CellShape& GetShape(CellKind kind);
/// Returns the kind with that name.
std::optional<CellKind> FindKind(std::string_view name);

}  // namespace QovMesh
