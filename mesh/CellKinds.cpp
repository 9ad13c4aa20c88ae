#include "mesh/CellKinds.h"

namespace QovMesh {
namespace {

constexpr CellEdge kLineEdges[] = {{0, 1}};
constexpr CellEdge kTriangleEdges[] = {{0, 1}, {1, 2}, {2, 0}};
constexpr CellEdge kQuadEdges[] = {{0, 1}, {1, 2}, {2, 3}, {3, 0}};
constexpr CellEdge kTetrahedronEdges[] = {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}};
constexpr CellEdge kPyramidEdges[] = {{0, 1}, {1, 2}, {2, 3}, {3, 0},
                                      {0, 4}, {1, 4}, {2, 4}, {3, 4}};
constexpr CellEdge kWedgeEdges[] = {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5},
                                    {5, 3}, {0, 3}, {1, 4}, {2, 5}};
constexpr CellEdge kHexahedronEdges[] = {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6},
                                         {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}};

constexpr CellFace kTetrahedronFaces[] = {
    {3, {0, 1, 3}}, {3, {1, 2, 3}}, {3, {2, 0, 3}}, {3, {0, 2, 1}}};
constexpr CellFace kPyramidFaces[] = {
    {4, {0, 3, 2, 1}}, {3, {0, 1, 4}}, {3, {1, 2, 4}}, {3, {2, 3, 4}}, {3, {3, 0, 4}}};
constexpr CellFace kWedgeFaces[] = {
    {3, {0, 2, 1}}, {3, {3, 4, 5}}, {4, {0, 1, 4, 3}}, {4, {1, 2, 5, 4}}, {4, {2, 0, 3, 5}}};
constexpr CellFace kHexahedronFaces[] = {{4, {0, 4, 7, 3}}, {4, {1, 2, 6, 5}}, {4, {0, 1, 5, 4}},
                                         {4, {3, 7, 6, 2}}, {4, {0, 3, 2, 1}}, {4, {4, 5, 6, 7}}};

/// In the order of CellKind.
constexpr std::array<CellShape, kNumCellKinds> kShapes = {{
    {"empty", 0, 0, 0, 0, {}, {}},
    {"vertex", 1, 0, 1, 1, {}, {}},
    {"points", 2, 0, 0, 0, {}, {}},
    {"line", 3, 1, 2, 2, kLineEdges, {}},
    {"triangle", 5, 2, 3, 3, kTriangleEdges, {}},
    {"quad", 9, 2, 4, 4, kQuadEdges, {}},
    {"polygon", 7, 2, 0, 0, {}, {}},
    {"tetrahedron", 10, 3, 4, 4, kTetrahedronEdges, kTetrahedronFaces},
    {"pyramid", 14, 3, 5, 5, kPyramidEdges, kPyramidFaces},
    {"wedge", 13, 3, 6, 6, kWedgeEdges, kWedgeFaces},
    {"hexahedron", 12, 3, 8, 8, kHexahedronEdges, kHexahedronFaces},
    {"quadratic-line", 21, 1, 2, 3, kLineEdges, {}},
    {"quadratic-triangle", 22, 2, 3, 6, kTriangleEdges, {}},
    {"quadratic-quad", 23, 2, 4, 8, kQuadEdges, {}},
    {"quadratic-tetrahedron", 24, 3, 4, 10, kTetrahedronEdges, kTetrahedronFaces},
    {"quadratic-pyramid", 27, 3, 5, 13, kPyramidEdges, kPyramidFaces},
    {"quadratic-wedge", 26, 3, 6, 15, kWedgeEdges, kWedgeFaces},
    {"quadratic-hexahedron", 25, 3, 8, 20, kHexahedronEdges, kHexahedronFaces},
}};
static_assert(static_cast<std::size_t>(CellKind::QuadraticHexahedron) + 1 == kNumCellKinds);

}  // namespace

const CellShape& GetShape(CellKind kind) { return kShapes[static_cast<std::size_t>(kind)]; }

std::optional<CellKind> FindKind(std::string_view name) {
  for (std::size_t i = 0; i < kNumCellKinds; ++i) {
    if (kShapes[i].mName == name) return static_cast<CellKind>(i);
  }
  return std::nullopt;
}

}  // namespace QovMesh
