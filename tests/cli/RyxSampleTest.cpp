#include <algorithm>
#include <cmath>
#include <filesystem>
#include <set>

#include "ryxFixture.h"
#include "sample/Fields.h"
#include "sample/Plate.h"
#include "sample/Solids.h"
#include "support/Streams.h"

namespace Qov::Test {
namespace {

namespace fs = std::filesystem;
using QovRyx::Geometry;
using testing::HasSubstr;

class RyxSample : public RyxProgram {
 protected:
  static std::vector<std::string> FilesIn(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      if (entry.is_regular_file()) names.push_back(fs::relative(entry.path(), folder).string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
};

TEST_F(RyxSample, WritesTheSameModelsEveryTimeAndSaysSo) {
  const Outcome first = Run({"sample", mDir / "a/new/folder"});
  ASSERT_EQ(first.mStatus, 0) << first.mErr;
  ASSERT_EQ(Run({"sample", mDir / "b"}).mStatus, 0);
  const auto names = FilesIn(mDir / "b");
  EXPECT_EQ(names.size(), 16U);
  EXPECT_EQ(FilesIn(mDir / "a/new/folder"), names);
  EXPECT_EQ(FilesIn(mDir.GetPath()).size(), 2 * names.size());
  for (const std::string& name : names) {
    EXPECT_THAT(first.mOut, HasSubstr("a/new/folder/" + name + "\n"));
    Streams here = ReadStreams(mDir / "b/" + name);
    Streams there = ReadStreams(mDir / "a/new/folder/" + name);
    EXPECT_EQ(here.erase("Global Information"), there.erase("Global Information"));
    EXPECT_EQ(here, there) << name;
  }
}

TEST_F(RyxSample, OverwritesItsFilesButFollowsNoLinks) {
  WriteFile(mDir / "plate.ryx", "something else");
  ASSERT_EQ(Run({"sample", mDir / ""}).mStatus, 0);
  EXPECT_GT(ReadFile(mDir / "plate.ryx").size(), 1000U);
  const TempDir outside;
  for (const std::string name : {"plate.ryx", "plate.vpt", "steps"}) {
    const TempDir folder;
    fs::create_symlink(outside / name, folder / name);
    const Outcome outcome = Run({"sample", folder / ""});
    EXPECT_EQ(outcome.mStatus, 2) << name;
    EXPECT_THAT(outcome.mErr, HasSubstr(name + " is a symbolic link"));
  }
  EXPECT_TRUE(FilesIn(outside.GetPath()).empty());
}

TEST_F(RyxSample, AssemblyHoldsWhatAMergeHasToCopeWith) {
  ASSERT_EQ(Run({"sample", mDir / ""}).mStatus, 0);
  QovRyx::Tree tree(false);
  LoadTree(tree, mDir / "assembly.ryx");
  std::size_t numParts = 0;
  std::set<float> reds;
  for (const auto& [id, entry] : tree.GetNodes()) {
    const auto* group = dynamic_cast<const QovRyx::Group*>(entry.mData.get());
    const auto* shape = dynamic_cast<const QovRyx::Shape*>(entry.mData.get());
    if (group != nullptr) numParts += group->mAttributes.count("part number");
    if (shape != nullptr) reds.insert(shape->mMaterial.mValues.mColour1.mR);
  }
  EXPECT_EQ(numParts, 25U);
  EXPECT_EQ(reds.size(), 5U);

  std::size_t numLinked = 0;
  std::size_t numUnsigned = 0;
  std::size_t numNaN = 0;
  std::set<std::uint32_t> nodeIds;
  QovRyx::ForEachGeometry(tree.GetNodes(), [&](std::uint32_t, const Geometry& geometry) {
    for (const auto& variable : geometry.GetVariables()) {
      std::vector<float> values;
      variable.mValues.GetValues(values);
      EXPECT_FALSE(values.empty()) << variable.mName;
      numLinked += variable.mLinked ? 1 : 0;
      numUnsigned += variable.mKindHighByte == 5 ? 1 : 0;
      if (variable.mName.starts_with("Gap")) {
        numNaN += static_cast<std::size_t>(std::count_if(
            values.begin(), values.end(), [](float value) { return std::isnan(value); }));
      }
      if (variable.mName != "Node Ids" || variable.mLinked) continue;
      std::vector<std::uint32_t> ids;
      variable.mValues.GetValues(ids);
      for (const std::uint32_t id : ids) EXPECT_TRUE(nodeIds.insert(id).second) << id;
    }
  });
  EXPECT_EQ(numLinked, 55U);
  EXPECT_EQ(numUnsigned, 10U);
  EXPECT_GT(numNaN, 100U);
}

TEST_F(RyxSample, GrowsAsAsked) {
  const std::string folder = mDir / "grown";
  const Outcome outcome = Run({"sample", folder, "--size", "3", "--parts", "3", "--steps", "2"});
  ASSERT_EQ(outcome.mStatus, 0) << outcome.mErr;
  EXPECT_EQ(outcome.mOut, folder + "/run1.ryx\n" + folder + "/run2.ryx\n");
  ASSERT_EQ(Run({"sample", mDir / "again", "--size", "3", "--parts", "3"}).mStatus, 0);
  EXPECT_EQ(FilesIn(mDir / "again").size(), 12U);
  EXPECT_EQ(ReadStreams(folder + "/run2.ryx")["Heavy Data"],
            ReadStreams(mDir / "again/run2.ryx")["Heavy Data"]);
  EXPECT_NE(ReadStreams(folder + "/run1.ryx")["Heavy Data"],
            ReadStreams(folder + "/run2.ryx")["Heavy Data"]);

  ASSERT_EQ(Run({"sample", folder, "--cases", "2", "--steps", "1"}).mStatus, 0);
  QovRyx::Tree tree(false);
  LoadTree(tree, folder + "/run1.ryx");
  std::vector<std::string> names;
  QovRyx::ForEachGeometry(tree.GetNodes(), [&](std::uint32_t, const Geometry& geometry) {
    EXPECT_EQ(geometry.GetVariables().size(), 5 + 2 * 4U);
    names.push_back(geometry.GetVariables().back().mName);
  });
  EXPECT_EQ(names, std::vector<std::string>(2, Barred("Temperature|LC2")));

  for (const std::string size : {"0", "-1", "many"}) {
    EXPECT_EQ(Run({"sample", folder, "--size", size}).mStatus, 2) << size;
  }
  const Outcome tooMany = Run({"sample", folder, "--size", "1000", "--steps", "1"});
  EXPECT_EQ(tooMany.mStatus, 2);
  EXPECT_THAT(tooMany.mErr, HasSubstr("cannot all have an id"));
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
