#include "mesh/Mesh.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "Qov/Util/Exception.h"
#include "mesh/ResultPlacement.h"
#include "mesh/SetMasks.h"
#include "support/ModelBuilder.h"

namespace QovMesh {
namespace {

using Qov::Test::MakeVariable;
using QovRyx::Geometry;
using QovRyx::NumericArray;
using Integers = std::vector<std::uint32_t>;

void AddIntegers(Geometry& geometry, const std::string& name, std::uint32_t kind,
                 const Integers& values) {
  geometry.AppendVariable(MakeVariable(name, kind, NumericArray::Of(values)));
}

/// Two triangles, a quad and a line over five points.
void FillMesh(Geometry& geometry, const std::string& instance = "") {
  const std::vector<float> points = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 2, 0, 0};
  geometry.AppendVariable(MakeVariable("Coordinates" + instance, 0, NumericArray::Of(points, 3)));
  AddIntegers(geometry, "Connectivity" + instance, 4, {0, 1, 2, 0, 2, 3, 0, 1, 2, 3, 1, 4});
  AddIntegers(geometry, "Polylength" + instance, 5, {3, 3, 4, 2});
}

std::string ErrorOf(const Geometry& geometry, const KindChoices& choices = {}) {
  try {
    LoadMesh(geometry, "", choices);
  } catch (const Qov::Util::Exception& error) {
    return error.GetLogMessage();
  }
  return "none";
}

TEST(Mesh, RunsAndDecisionsCoverAllCells) {
  Geometry geometry("g");
  FillMesh(geometry);
  AddIntegers(geometry, "Node Ids", 6, {11, 12, 13, 14, 15});
  AddIntegers(geometry, "Element IDs", 9, {1, 2});
  const Mesh mesh = LoadMesh(geometry, "", {});
  EXPECT_EQ(mesh.GetNumPoints(), 5U);
  EXPECT_EQ(mesh.GetNumCells(), 4U);
  ASSERT_EQ(mesh.mRuns.size(), 3U);
  EXPECT_EQ(mesh.mRuns[0].mKind, CellKind::Triangle);
  EXPECT_EQ(mesh.mRuns[1].mKind, CellKind::Quad);
  EXPECT_EQ(mesh.mRuns[2].mFirstNode, 10U);
  EXPECT_EQ(mesh.mRuns[2].mFirstCell, 3U);
  EXPECT_THAT(mesh.mNodeIds, testing::ElementsAre(11, 12, 13, 14, 15));
  EXPECT_THAT(
      mesh.mWarnings,
      testing::ElementsAre("the array Element IDs has 2 values for 4 items: it is not used"));
  ASSERT_EQ(mesh.mDecisions.size(), 3U);
  EXPECT_EQ(DescribeDecision(mesh.mDecisions[0]), "1 cell with 2 nodes: line (number of nodes)");
}

TEST(Mesh, CellsWithoutConnectivityDoNotCount) {
  Geometry geometry("g");
  FillMesh(geometry);
  EXPECT_EQ(MeshArrays(geometry).Count("").mNumCells, 4U);
  Geometry cloud("g");
  for (const auto& array : geometry.GetVariables()) {
    if (array.mName != "Connectivity") cloud.AppendVariable(array);
  }
  EXPECT_EQ(MeshArrays(cloud).Count("").mNumCells, 0U);
  EXPECT_EQ(LoadMesh(cloud, "", {}).GetNumCells(), 0U);
}

TEST(Mesh, ArraysOfTheInstanceAreTaken) {
  Geometry geometry("g");
  FillMesh(geometry);
  const std::vector<float> moved = {5, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 2, 0, 0};
  geometry.AppendVariable(MakeVariable("Coordinates |F2", 0, NumericArray::Of(moved, 3)));
  EXPECT_EQ(LoadMesh(geometry, "F2", {}).mPoints[0], 5);
  EXPECT_EQ(LoadMesh(geometry, "F1", {}).mPoints[0], 0);
}

TEST(Mesh, ContradictionsAreRefused) {
  EXPECT_EQ(ErrorOf(Geometry("g")), "the geometry has no array Coordinates");
  const auto changed = [](const std::string& name, NumericArray values) {
    Geometry geometry("g");
    FillMesh(geometry);
    geometry.EditVariable(*geometry.FindVariable(name)).mValues = std::move(values);
    return ErrorOf(geometry);
  };
  EXPECT_EQ(changed("Coordinates", NumericArray::Of(std::vector<float>(8), 4)),
            "the array Coordinates has 4 components, not 2 or 3");
  EXPECT_EQ(changed("Coordinates", NumericArray::Of(std::vector<float>(8), 3)),
            "the array Coordinates ends within a point");
  EXPECT_EQ(changed("Polylength", NumericArray::Of(Integers{3, 3, 4, 3})),
            "the lengths in Polylength add up to 13, but Connectivity has 12 values");
  EXPECT_EQ(changed("Connectivity", NumericArray::Of(Integers{0, 1, 2, 0, 2, 3, 0, 1, 2, 3, 1, 5})),
            "value 11 of Connectivity is 5, but there are 5 points, from 0");
  Geometry geometry("g");
  FillMesh(geometry);
  EXPECT_EQ(ErrorOf(geometry, {{3, CellKind::Quad}}),
            "a cell of the kind quad cannot have 3 nodes");
}

TEST(ResultPlacement, CountsDecideAndThenOtherResultsOfTheKind) {
  QovRyx::Tree tree(false);
  auto& geometry = Qov::Test::AddNode<Geometry>(tree, QovRyx::NodeTree::kRootId, "g");
  FillMesh(geometry);
  const auto result = [](const std::string& name, std::uint32_t kind, std::size_t count) {
    return MakeVariable(name, kind, NumericArray::Of(std::vector<float>(count)));
  };
  geometry.AppendVariable(result("cell", 20, 4));
  geometry.AppendVariable(result("point", 12, 5));
  const PlacementRule rule(tree.GetNodes());
  const auto place = [&](std::uint32_t kind, std::size_t count, const MeshCounts& counts) {
    return rule.Decide(result("r", kind, count), counts);
  };
  EXPECT_EQ(place(12, 4, {5, 4}).mPlacement, Placement::Cell);
  EXPECT_EQ(place(12, 4, {5, 4}).mWarning, "");
  EXPECT_EQ(place(20, 7, {7, 7}).mPlacement, Placement::Cell);
  EXPECT_EQ(place(12, 7, {7, 7}).mPlacement, Placement::Point);
  EXPECT_EQ(place(99, 7, {7, 7}).mWarning, "as many points as cells: point data");
  EXPECT_EQ(place(12, 6, {7, 7}).mPlacement, Placement::Field);
  const auto torn = MakeVariable("r", 12, NumericArray::Of(std::vector<float>(14), 3));
  EXPECT_EQ(rule.Decide(torn, {4, 9}).mPlacement, Placement::Field);
}

TEST(SetMasks, MarkThePointsWithTheIds) {
  const SetMasks masks(Integers{7, 5, 9, 5});
  EXPECT_THAT(masks.MakeMask(Integers{5, 5, 9, 100}), testing::ElementsAre(0, 1, 1, 1));
  EXPECT_EQ(masks.CountKnown(Integers{5, 5, 9, 100}), 3U);
}

}  // namespace
}  // namespace QovMesh
