#include "mesh/KindRule.h"

#include <gmock/gmock.h>

#include <cmath>
#include <numeric>
#include <string>
#include <vector>

namespace QovMesh {
namespace {

using Points = std::vector<float>;

const Points kSquare = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
const Points kTetrahedron = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1};
const Points kCube = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 1, 1, 1, 0, 1, 1};

/// Appends the middle of each edge of the linear cell.
Points Quadratic(Points corners, CellKind kind, float offset = 0) {
  for (const CellEdge& edge : GetShape(kind).mEdges) {
    for (std::size_t k = 0; k < 3; ++k) {
      corners.push_back((corners[edge[0] * 3U + k] + corners[edge[1] * 3U + k]) / 2 + offset);
    }
  }
  return corners;
}

/// Takes all points for one cell; in each copy of it the points are the same.
KindDecision Decide(const Points& points, const KindChoices& choices = {}) {
  CellSample sample{points.size() / 3, {}};
  for (int copy = 0; copy < 3; ++copy) {
    for (std::uint32_t i = 0; i < sample.mNumNodes; ++i) sample.mNodes.push_back(i);
  }
  return DecideKind(sample, points, choices);
}

TEST(KindRule, KnowsCellsByNumberAndPlaceOfTheirNodes) {
  EXPECT_EQ(Decide({0, 0, 0}).mKind, CellKind::Vertex);
  EXPECT_EQ(Decide({0, 0, 0, 1, 0, 0}).mKind, CellKind::Line);
  EXPECT_EQ(Decide({0, 0, 0, 1, 0, 0, 1, 1, 0}).mKind, CellKind::Triangle);
  EXPECT_EQ(Decide(kSquare).mKind, CellKind::Quad);
  EXPECT_EQ(Decide(kTetrahedron).mKind, CellKind::Tetrahedron);
  EXPECT_EQ(Decide({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, .5F, .5F, 1}).mKind, CellKind::Pyramid);
  EXPECT_EQ(Decide({0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 0, 1, 1}).mKind, CellKind::Wedge);
  EXPECT_EQ(Decide(kCube).mKind, CellKind::Hexahedron);
  const Points triangle = {0, 0, 0, 1, 0, 0, 0, 1, 0};
  const Points wedge = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 0, 1, 1};
  for (const float offset : {0.0F, 0.1F}) {
    EXPECT_EQ(Decide(Quadratic(triangle, CellKind::Triangle, offset)).mKind,
              CellKind::QuadraticTriangle);
    EXPECT_EQ(Decide(Quadratic(kSquare, CellKind::Quad, offset)).mKind, CellKind::QuadraticQuad);
    EXPECT_EQ(Decide(Quadratic(kTetrahedron, CellKind::Tetrahedron, offset)).mKind,
              CellKind::QuadraticTetrahedron);
    EXPECT_EQ(Decide(Quadratic(wedge, CellKind::Wedge, offset)).mKind, CellKind::QuadraticWedge);
    EXPECT_EQ(Decide(Quadratic(kCube, CellKind::Hexahedron, offset)).mKind,
              CellKind::QuadraticHexahedron);
  }
  const Points pentagram = {0, 0, 0, 1, 0,    0, 1.5F, 1,    0,   1, 2,
                            0, 0, 2, 0, -.5F, 1, 0,    -.5F, .5F, 0};
  EXPECT_EQ(Decide(pentagram).mKind, CellKind::Polygon);
  Points cloud = pentagram;
  cloud[2] = 3;
  cloud[11] = -2;
  EXPECT_EQ(Decide(cloud).mKind, CellKind::Points);
  EXPECT_THAT(Decide(cloud).mWarning, testing::HasSubstr("sets of points"));
}

TEST(KindRule, OrderOfEdgeNodesIsFound) {
  // Edge nodes of the bottom, then of the vertical edges, then of the top.
  const std::vector<std::uint8_t> order = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,
                                           10, 11, 16, 17, 18, 19, 12, 13, 14, 15};
  const Points usual = Quadratic(kCube, CellKind::Hexahedron, 0.1F);
  Points stored(usual.size());
  for (std::size_t i = 0; i < order.size(); ++i) {
    for (std::size_t k = 0; k < 3; ++k) stored[3U * order[i] + k] = usual[3 * i + k];
  }
  for (const KindChoices& choices : {KindChoices{}, {{20, CellKind::QuadraticHexahedron}}}) {
    const KindDecision decision = Decide(stored, choices);
    EXPECT_EQ(decision.mKind, CellKind::QuadraticHexahedron);
    EXPECT_EQ(decision.mNodeOrder, order);
  }
  EXPECT_THAT(Decide(usual).mNodeOrder, testing::IsEmpty());
}

TEST(KindRule, FlatRingsArePolygonsAndThinSolidsAreNot) {
  Points pentagon;
  for (int i = 0; i < 5; ++i) {
    pentagon.insert(pentagon.end(), {std::cos(1.2566F * static_cast<float>(i)),
                                     std::sin(1.2566F * static_cast<float>(i)), 0});
  }
  EXPECT_EQ(Decide(pentagon).mKind, CellKind::Polygon);
  Points thin = kCube;
  for (std::size_t i = 2; i < thin.size(); i += 3) thin[i] *= 0.01F;
  EXPECT_EQ(Decide(thin).mKind, CellKind::Hexahedron);
}

TEST(KindRule, FlatnessDoesNotDependOnPlaceAndDirection) {
  // A quad far from the origin, in a plane that no axis lies in.
  const Points far = {1e4F,      1e4F,      1e4F,      1e4F + 10, 1e4F,      1e4F + 10,
                      1e4F + 10, 1e4F + 10, 1e4F + 20, 1e4F,      1e4F + 10, 1e4F + 10};
  EXPECT_EQ(Decide(far).mKind, CellKind::Quad);
  EXPECT_EQ(Decide({0, 0, 0, 1, 0, 0, 1, 1, .1F, 0, 1, -.1F}).mKind, CellKind::Quad);
}

TEST(KindRule, AskedKindsAndDoubtsAreSaid) {
  EXPECT_EQ(Decide(kSquare, {{4, CellKind::Tetrahedron}}).mKind, CellKind::Tetrahedron);
  EXPECT_EQ(Decide({1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}).mWarning,
            "the nodes of each cell lie on one point");
  Points points = kSquare;
  points.insert(points.end(), kTetrahedron.begin(), kTetrahedron.end());
  const KindDecision mixed = DecideKind({4, {0, 1, 2, 3, 0, 1, 2, 3, 4, 5, 6, 7}}, points, {});
  EXPECT_EQ(mixed.mKind, CellKind::Quad);
  EXPECT_EQ(mixed.mWarning, "33.3 % of the cells are not flat");
  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_NO_FATAL_FAILURE(Decide({nan, nan, nan, 0, 0, 0, 1, 0, 0, 0, 1, 0}));
  Points hexahedron = Quadratic(kCube, CellKind::Hexahedron);
  hexahedron.back() = nan;
  EXPECT_NE(Decide(hexahedron).mKind, CellKind::QuadraticHexahedron);
}

}  // namespace
}  // namespace QovMesh
