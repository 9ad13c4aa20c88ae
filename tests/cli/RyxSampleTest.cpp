#include <cmath>
#include <set>

#include "ryxFixture.h"
#include "sample/Fields.h"
#include "sample/Plate.h"
#include "sample/Solids.h"

namespace Qov::Test {
namespace {

using RyxSample = RyxProgram;

TEST_F(RyxSample, WritesTheSameModelsEveryTimeAndSaysSo) { ExpectTranscript("sample.txt"); }

TEST_F(RyxSample, GrowsAsAsked) { ExpectTranscript("sample_sizes.txt"); }

/// For other programs to tell parts and nodes by.
TEST_F(RyxSample, AllNodesOfTheAssemblyHaveIdsOfTheirOwn) {
  ASSERT_EQ(Run({"sample", mDir / ""}).mStatus, 0);
  QovRyx::Tree tree(false);
  LoadTree(tree, mDir / "assembly.ryx");
  std::set<std::uint32_t> nodeIds;
  QovRyx::ForEachGeometry(tree.GetNodes(), [&](std::uint32_t, const QovRyx::Geometry& geometry) {
    for (const auto& variable : geometry.GetVariables()) {
      std::vector<std::uint32_t> ids;
      variable.mValues.GetValues(ids);
      EXPECT_FALSE(ids.empty()) << variable.mName;
      if (variable.mName != "Node Ids" || variable.mLinked) continue;
      for (const std::uint32_t id : ids) EXPECT_TRUE(nodeIds.insert(id).second) << id;
    }
  });
  EXPECT_GT(nodeIds.size(), 1000U);
}

/// The tetrahedra of a part fill the block that its hexahedra would fill, none of them inside out.
TEST(RyxSampleSolids, TetrahedraFillTheBlock) {
  constexpr std::size_t kSize = 3;
  QovRyx::Tree tree(false);
  Tools::BuildSolids(tree, {kSize, 2, 0}, 1);
  const auto& variables = QovRyx::AsGeometry(tree.GetNodes().GetReqNode(7))->GetVariables();
  std::vector<float> at;
  variables[0].mValues.GetValues(at);
  std::vector<std::uint32_t> corners;
  variables[1].mValues.GetValues(corners);
  ASSERT_EQ(corners.size(), 4 * 5 * kSize * kSize * kSize);
  double volume = 0.0;
  for (std::size_t i = 0; i < corners.size(); i += 4) {
    const auto edge = [&](std::size_t corner, std::size_t axis) {
      return at[3 * corners[i + corner] + axis] - at[3 * corners[i] + axis];
    };
    double six = 0.0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const std::size_t next = (axis + 1) % 3;
      const std::size_t last = (axis + 2) % 3;
      six += edge(1, axis) * (edge(2, next) * edge(3, last) - edge(2, last) * edge(3, next));
    }
    EXPECT_GT(six, 0.0) << i / 4;
    volume += six / 6;
  }
  EXPECT_NEAR(volume, std::pow(2.5 * kSize, 3), 1e-3);
}

/// Checks the closed solutions against each other: the stress that belongs to the change of the
/// displacement along x, at a place that the hole hardly disturbs.
TEST(RyxSampleFields, StressBelongsToDisplacement) {
  constexpr float kStep = 4.0F;
  for (const Tools::LoadCase& load : Tools::PlateLoadCases()) {
    Tools::Mesh mesh;
    mesh.mPoints = {{300, 200, 0}, {300 + kStep, 200, 0}, {300, 200 + kStep, 0}};
    const Tools::Field u = Tools::DisplacementAroundHole(mesh, 12, load.mTension);
    const Tools::Field stress = Tools::StressAroundHole(mesh, 12, load.mTension);
    const double xx = (u[3] - u[0]) / kStep;
    const double yy = (u[7] - u[1]) / kStep;
    const double xy = ((u[6] - u[0]) + (u[4] - u[1])) / kStep;
    const double factor = 210000.0 / (1 - 0.3 * 0.3);
    const double sx = factor * (xx + 0.3 * yy);
    const double sy = factor * (yy + 0.3 * xx);
    const double sxy = 210000.0 / 2.6 * xy;
    EXPECT_NEAR(stress[0], std::sqrt(sx * sx - sx * sy + sy * sy + 3 * sxy * sxy), 0.01 * stress[0])
        << load.mName;
  }
}

}  // namespace
}  // namespace Qov::Test
