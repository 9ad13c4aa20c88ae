#include "mesh/OuterSurface.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "mesh/Cubes.h"

namespace QovMesh {
namespace {

using Qov::Test::MakeCubes;

/// Returns six times the volume that the triangles enclose.
double EnclosedVolume(const Mesh& mesh, const Surface& surface) {
  double volume = 0;
  for (std::size_t i = 0; i < surface.mTriangles.size(); i += 3) {
    std::array<std::array<double, 3>, 3> p{};
    for (std::size_t j = 0; j < 3; ++j) {
      for (std::size_t k = 0; k < 3; ++k) p[j][k] = mesh.mPoints[3 * surface.mTriangles[i + j] + k];
    }
    volume += p[0][0] * (p[1][1] * p[2][2] - p[1][2] * p[2][1]) -
              p[0][1] * (p[1][0] * p[2][2] - p[1][2] * p[2][0]) +
              p[0][2] * (p[1][0] * p[2][1] - p[1][1] * p[2][0]);
  }
  return volume;
}

Mesh OneCell(CellKind kind, std::vector<float> corners) {
  const CellShape& shape = GetShape(kind);
  Mesh mesh;
  if (shape.IsQuadratic()) {
    for (const CellEdge& edge : shape.mEdges) {
      for (std::size_t k = 0; k < 3; ++k) {
        corners.push_back((corners[edge[0] * 3U + k] + corners[edge[1] * 3U + k]) / 2);
      }
    }
  }
  mesh.mPoints = std::move(corners);
  for (std::uint32_t i = 0; i < shape.mNumNodes; ++i) mesh.mNodes.push_back(i);
  mesh.mRuns = {{0, 1, 0, shape.mNumNodes, kind}};
  return mesh;
}

TEST(OuterSurface, FacesOfOneCellAreKeptAndSharedOnesAreNot) {
  for (const std::uint32_t n : {1U, 3U}) {
    const Mesh mesh = MakeCubes(n);
    const Surface surface = FindOuterSurface(mesh);
    EXPECT_EQ(surface.mTriangleCells.size(), 12U * n * n);
    EXPECT_DOUBLE_EQ(EnclosedVolume(mesh, surface), 6.0 * n * n * n);
    const std::set<std::uint32_t> cells(surface.mTriangleCells.begin(),
                                        surface.mTriangleCells.end());
    EXPECT_EQ(cells.size(), n == 1 ? 1U : 26U);  // all but the one in the middle
  }
}

TEST(OuterSurface, CellsRoundOnePointTakeLinearTime) {
  constexpr std::uint32_t kNumPairs = 20000;  // each shares a face that has point 0
  Mesh mesh;
  mesh.mPoints.resize(std::size_t{3} * (4 * kNumPairs + 1), 0.0F);
  for (std::uint32_t i = 0; i < kNumPairs; ++i) {
    const std::uint32_t p = 4 * i + 1;
    mesh.mNodes.insert(mesh.mNodes.end(), {0, p, p + 1, p + 2, p + 1, 0, p, p + 3});
  }
  mesh.mRuns = {{0, std::uint64_t{2} * kNumPairs, 0, 4, CellKind::Tetrahedron}};
  EXPECT_EQ(FindOuterSurface(mesh).mTriangleCells.size(), std::size_t{6} * kNumPairs);
}

TEST(OuterSurface, EverySolidKindIsClosedAndFacesOutward) {
  const std::vector<float> tetrahedron = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1};
  const std::vector<float> pyramid = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 3};
  const std::vector<float> wedge = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 0, 1, 1};
  const std::vector<float> inverted = {0, 0, 1, 1, 0, 1, 0, 1, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0};
  std::vector<float> cube = MakeCubes(1).mPoints;
  for (std::size_t k = 0; k < 3; ++k) {  // MakeCubes numbers points by rows
    std::swap(cube[6 + k], cube[9 + k]);
    std::swap(cube[18 + k], cube[21 + k]);
  }
  const auto volume = [](CellKind kind, const std::vector<float>& corners) {
    const Mesh mesh = OneCell(kind, corners);
    return EnclosedVolume(mesh, FindOuterSurface(mesh));
  };
  EXPECT_DOUBLE_EQ(volume(CellKind::Tetrahedron, tetrahedron), 1);
  EXPECT_DOUBLE_EQ(volume(CellKind::QuadraticTetrahedron, tetrahedron), 1);
  EXPECT_DOUBLE_EQ(volume(CellKind::Pyramid, pyramid), 6);
  EXPECT_DOUBLE_EQ(volume(CellKind::QuadraticPyramid, pyramid), 6);
  EXPECT_DOUBLE_EQ(volume(CellKind::Wedge, wedge), 3);
  EXPECT_DOUBLE_EQ(volume(CellKind::Wedge, inverted), 3);
  EXPECT_DOUBLE_EQ(volume(CellKind::QuadraticWedge, wedge), 3);
  EXPECT_DOUBLE_EQ(volume(CellKind::QuadraticHexahedron, cube), 6);
}

TEST(OuterSurface, DegenerateAndRepeatedCellsLeaveNoInnerFaces) {
  Mesh twice = MakeCubes(1);  // three cells of the same nodes: no face belongs to one alone
  const std::vector<std::uint32_t> nodes = twice.mNodes;
  for (int i = 0; i < 2; ++i) twice.mNodes.insert(twice.mNodes.end(), nodes.begin(), nodes.end());
  twice.mRuns[0].mNumCells = 3;
  EXPECT_TRUE(FindOuterSurface(twice).mTriangles.empty());
  // A wedge that is written as a hexahedron meets a tetrahedron at a triangle.
  Mesh mesh;
  mesh.mPoints = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 0, 1, 1, 0, 0, 2};
  mesh.mNodes = {0, 1, 2, 2, 3, 4, 5, 5, 3, 4, 5, 6};
  mesh.mRuns = {{0, 1, 0, 8, CellKind::Hexahedron}, {1, 1, 8, 4, CellKind::Tetrahedron}};
  const Surface surface = FindOuterSurface(mesh);
  EXPECT_EQ(surface.mTriangleCells.size(), 1U + 6U + 3U);
  EXPECT_DOUBLE_EQ(EnclosedVolume(mesh, surface), 4);
}

TEST(OuterSurface, FlatCellsAndLinesAreTakenAsTheyAre) {
  Mesh mesh;
  mesh.mPoints.assign(18, 0);
  for (std::size_t i = 0; i < 6; ++i) mesh.mPoints[3 * i] = static_cast<float>(i);
  mesh.mNodes = {0, 1, 2, 3, 4, 0, 1, 2, 3, 4, 5, 5, 0, 1};
  mesh.mRuns = {{0, 1, 0, 5, CellKind::Polygon},
                {1, 1, 5, 4, CellKind::Quad},
                {2, 1, 9, 2, CellKind::Line},
                {3, 1, 11, 3, CellKind::QuadraticLine}};
  const Surface surface = FindOuterSurface(mesh);
  EXPECT_THAT(surface.mTriangleCells, testing::ElementsAre(0, 0, 0, 1, 1));
  EXPECT_EQ(surface.mNumDoubtfulPolygons, 1U);  // it has no area
  EXPECT_THAT(surface.mLines, testing::ElementsAre(4, 5, 5, 1, 1, 0));
}

/// Returns the areas of all triangles in the plane z = 0, and those of triangles that are turned
/// over apart from the others.
std::pair<double, double> Areas(const std::vector<float>& points, CellKind kind) {
  Mesh mesh;
  mesh.mPoints = points;
  const auto numNodes = static_cast<std::uint32_t>(points.size() / 3);
  for (std::uint32_t i = 0; i < numNodes; ++i) mesh.mNodes.push_back(i);
  mesh.mRuns = {{0, 1, 0, numNodes, kind}};
  const Surface surface = FindOuterSurface(mesh);
  std::pair<double, double> areas;
  for (std::size_t i = 0; i < surface.mTriangles.size(); i += 3) {
    const auto x = [&](std::size_t j) { return points[3 * surface.mTriangles[i + j]]; };
    const auto y = [&](std::size_t j) { return points[3 * surface.mTriangles[i + j] + 1]; };
    const double area = (x(1) - x(0)) * (y(2) - y(0)) - (y(1) - y(0)) * (x(2) - x(0));
    (area < 0 ? areas.second : areas.first) += area / 2;
  }
  EXPECT_EQ(surface.mNumDoubtfulPolygons, 0U);
  return areas;
}

TEST(OuterSurface, EdgesOfFacesAreTheirOutlineWithoutDiagonals) {
  struct Row {
    CellKind mKind;
    std::vector<std::uint32_t> mNodes;
    std::set<std::set<std::uint32_t>> mEdges;
  };
  const std::vector<Row> rows = {
      {CellKind::Triangle, {0, 1, 2}, {{0, 1}, {1, 2}, {0, 2}}},
      {CellKind::Quad, {0, 1, 2, 3}, {{0, 1}, {1, 2}, {2, 3}, {0, 3}}},
      {CellKind::Quad, {0, 1, 1, 3}, {{0, 1}, {1, 3}, {0, 3}}},
      {CellKind::Polygon, {0, 1, 2, 3, 4}, {{0, 1}, {1, 2}, {2, 3}, {3, 4}, {0, 4}}},
      {CellKind::QuadraticTriangle,
       {0, 2, 4, 1, 3, 5},
       {{0, 1}, {1, 2}, {2, 3}, {3, 4}, {4, 5}, {0, 5}}}};
  for (const Row& row : rows) {
    Mesh mesh;
    mesh.mPoints = {0, 0, 0, 2, 0, 0, 3, 2, 0, 1, 3, 0, 0, 2, 0, -0.2F, 1, 0};
    mesh.mNodes = row.mNodes;
    mesh.mRuns = {{0, 1, 0, static_cast<std::uint32_t>(row.mNodes.size()), row.mKind}};
    const Surface surface = FindOuterSurface(mesh);
    ASSERT_EQ(surface.mTriangleEdges.size(), surface.mTriangleCells.size());
    std::set<std::set<std::uint32_t>> edges;
    for (std::size_t i = 0; i < surface.mTriangles.size(); ++i) {
      if ((surface.mTriangleEdges[i / 3] >> i % 3 & 1) == 0) continue;
      edges.insert({surface.mTriangles[i], surface.mTriangles[i / 3 * 3 + (i + 1) % 3]});
    }
    EXPECT_EQ(edges, row.mEdges);
  }
}

TEST(OuterSurface, ConcaveCellsKeepTheirShape) {
  using testing::Pair;
  const std::vector<float> dart = {0, 0, 0, 2, -2, 0, 1, 0, 0, 2, 2, 0};
  for (std::size_t first = 0; first < 4; ++first) {  // wherever the reflex corner is
    std::vector<float> turned = dart;
    std::rotate(turned.begin(), turned.begin() + static_cast<std::ptrdiff_t>(3 * first),
                turned.end());
    EXPECT_THAT(Areas(turned, CellKind::Quad), Pair(2, 0));
    EXPECT_THAT(Areas(turned, CellKind::Polygon), Pair(2, 0));
  }
  // A comb with two notches, whose back has straight corners.
  const std::vector<float> comb = {0, 0, 0, 2, 0, 0, 5, 0, 0, 5, 3, 0, 4, 3, 0, 4, 1, 0, 3, 1,
                                   0, 3, 3, 0, 2, 3, 0, 2, 1, 0, 1, 1, 0, 1, 3, 0, 0, 3, 0};
  EXPECT_THAT(Areas(comb, CellKind::Polygon), Pair(11, 0));
}

}  // namespace
}  // namespace QovMesh
