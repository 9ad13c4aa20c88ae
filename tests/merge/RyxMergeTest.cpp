#include "Qov/Ryx/RyxMerge.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "support/ModelBuilder.h"
#include "support/ModelCompare.h"
#include "support/TempDir.h"

namespace QovRyx {
namespace {

using namespace Qov::Test;
using testing::ElementsAre;
using testing::HasSubstr;

/// Two files over one mesh, each with two load cases, and what a merge made of them.
class RyxMerge : public testing::Test {
 protected:
  RyxMerge() {
    SavePlate(mFiles[0], {"Stress|LC1", "Stress|LC2"}, 1);
    SavePlate(mFiles[1], {"Stress|LC1", "Stress|LC2"}, 2);
  }

  /// The variables of a geometry of the merged model.
  const std::vector<Geometry::VarStruct>& Variables(std::uint32_t id) {
    return AsGeometry(LoadOutput().GetNodes().GetReqNode(id))->GetVariables();
  }
  std::vector<std::string> Names() {
    return VariableTexts(*AsGeometry(LoadOutput().GetNodes().GetReqNode(PlateIds::kGeometry)));
  }
  Tree& LoadOutput() {
    if (!mMerged) {
      mMerged = std::make_unique<Tree>(false);
      LoadTree(*mMerged, mOutput);
    }
    return *mMerged;
  }
  static std::vector<float> Values(const Geometry::VarStruct& variable) {
    std::vector<float> values;
    variable.mValues.GetValues(values);
    return values;
  }

  TempDir mDir;
  std::vector<std::string> mFiles{mDir / "a.ryx", mDir / "b.ryx"};
  std::string mOutput = mDir / "out.ryx";
  std::unique_ptr<Tree> mMerged;
};

TEST_F(RyxMerge, DatasetsLieBeneathOneGroupWithIdsOfTheirOwn) {
  ASSERT_EQ(merge_as_datasets(mFiles, mOutput), 0);
  const auto* root = dynamic_cast<const Group*>(LoadOutput().GetNodes().GetReqNode(1).mData.get());
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->GetName(), "Merge");
  EXPECT_EQ(root->mTakesModels, 1);
  EXPECT_EQ(Values(Variables(5)[2]), Ramp(40, 101.0F));
  EXPECT_EQ(Values(Variables(10)[2]), Ramp(40, 102.0F));
  const auto& sets = LoadOutput().GetNodes().GetReqNode(11).mData;
  EXPECT_EQ(dynamic_cast<const NodeSets&>(*sets).GetSets()[2].mValues, Count(3, 22));
}

TEST_F(RyxMerge, HistoryIsThatOfTheFirstFileAndOneEntry) {
  ASSERT_EQ(merge_as_datasets(mFiles, mOutput), 0);
  const std::vector<ModifierInfo>& history = LoadOutput().GetModifiers();
  ASSERT_EQ(history.size(), 2U);
  EXPECT_EQ(history[0].mApplication, "PlateMaker");
  EXPECT_EQ(history[1].mApplication, "RyxMerge");
  EXPECT_EQ(history[1].mApplicationVersion, "2017 R1");
}

TEST_F(RyxMerge, InstancesShareWhatTheirLoadCasesHaveInCommon) {
  ASSERT_EQ(merge_as_instances(mFiles, mOutput, true, false, false), 0);
  EXPECT_THAT(Names(),
              ElementsAre("Coordinates|LC1", "Connectivity|LC1", "Stress|LC1", "Stress|LC2",
                          "Connectivity|LC2 -> 4,1", "Coordinates|LC2 -> 4,0", "Coordinates|LC1",
                          "Connectivity|LC1", "Stress|LC1", "Stress|LC2"));
  EXPECT_EQ(Values(Variables(PlateIds::kGeometry)[5]), Ramp(120, 1.0F));
  EXPECT_EQ(Values(Variables(PlateIds::kGeometry)[9]), Ramp(40, 102.0F));
}

TEST_F(RyxMerge, SuffixesKeepTheFilesApart) {
  ASSERT_EQ(merge_as_instances(mFiles, mOutput, false, true, false), 0);
  EXPECT_THAT(Names(),
              ElementsAre("Coordinates|F1", "Connectivity|F1", "Stress|F1LC1", "Stress|F1LC2",
                          "Coordinates|F2", "Connectivity|F2", "Stress|F2LC1", "Stress|F2LC2"));
}

TEST_F(RyxMerge, AutomaticRenamingTakesTheInstancesOnly) {
  ASSERT_EQ(merge_as_instances(mFiles, mOutput, true, true, true), 0);
  EXPECT_THAT(Names(), ElementsAre("Coordinates", "Connectivity", "Stress|F1LC1", "Stress|F1LC2",
                                   "Stress|F2LC1", "Stress|F2LC2"));
  EXPECT_EQ(Values(Variables(PlateIds::kGeometry)[4]), Ramp(40, 102.0F));
}

TEST_F(RyxMerge, FurtherFileOfAnotherStructureIsRefused) {
  Tree other(false);
  BuildPlate(other, {}, 3);
  AddNode<Geometry>(other, PlateIds::kShape, "One more");
  SaveTree(other, mFiles[1]);
  testing::internal::CaptureStderr();
  EXPECT_EQ(merge_as_instances(mFiles, mOutput, true, false, false), 2);
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("Element Not Found"));
  EXPECT_FALSE(std::filesystem::exists(mOutput));
}

/// View-point files of all sorts, each with a path named like the file.
class ViewPointMerge : public RyxMerge {
 protected:
  std::string MakeViewPointFile(const std::string& name) {
    SaveViewPointFile(mDir / name, name);
    return mDir / name;
  }
  static void Overwrite(const std::string& path, std::streamoff offset, const char* bytes) {
    std::fstream(path, std::ios::binary | std::ios::in | std::ios::out).seekp(offset) << bytes;
  }
  std::vector<std::string> PathNames() {
    std::vector<std::string> names;
    for (const ViewPointPath& path : LoadOutput().GetViewPointPaths()) names.push_back(path.mName);
    return names;
  }
};

TEST_F(ViewPointMerge, PathsFollowThoseOfTheModelInTheOrderOfTheFiles) {
  Tree model(false);
  BuildPlate(model, {"S"}, 1);
  AddViewPointPath(model, "own", 1);
  SaveTree(model, mFiles[0]);
  const std::vector<std::string> files = {MakeViewPointFile("z.vpt"), MakeViewPointFile("old.vpt"),
                                          MakeViewPointFile("odd.vpt")};
  Overwrite(files[1], 8, "0.1");
  Overwrite(files[2], 0, "oddmagic");
  ASSERT_EQ(merge_viewpoints_with_ryx(mFiles[0], files, mOutput), 0);
  EXPECT_THAT(PathNames(), ElementsAre("own", "z.vpt", "odd.vpt"));
  EXPECT_EQ(QovJbf::ryx_file_version, "1.3");
  LoadOutput().GetViewPointPaths().resize(1);
  LoadOutput().GetViewPoint() = model.GetViewPoint();
  EXPECT_EQ(DescribeModel(LoadOutput()), DescribeModel(mFiles[0]));
}

TEST_F(ViewPointMerge, UnreadableFileFailsWithoutAnOutput) {
  const std::vector<std::string> files = {MakeViewPointFile("a.vpt"), mDir / "short.vpt"};
  std::ofstream(files[1]) << "\x89JBF 11 b.";
  testing::internal::CaptureStderr();
  EXPECT_EQ(merge_viewpoints_with_ryx(mFiles[0], files, mOutput), 2);
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              HasSubstr("short.vpt\" is too short for a view-point file"));
  EXPECT_FALSE(std::filesystem::exists(mOutput));
}

}  // namespace
}  // namespace QovRyx
