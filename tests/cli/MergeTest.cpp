#include "RyxMergeFixture.h"

namespace {

using namespace Qov::Test;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

class Merging : public RyxMergeProgram {
 protected:
  /// The result names of the plate in the output.
  std::vector<std::string> Names() {
    QovRyx::Tree tree(false);
    LoadTree(tree, mOutput);
    return VariableTexts(*QovRyx::AsGeometry(tree.GetNodes().GetReqNode(PlateIds::kGeometry)));
  }
  std::size_t CountGeometries() {
    QovRyx::Tree tree(false);
    LoadTree(tree, mOutput);
    std::size_t count = 0;
    QovRyx::ForEachGeometry(tree.GetNodes(), [&count](auto, auto&) { ++count; });
    return count;
  }
  std::size_t CountPaths() {
    QovRyx::Tree tree(false);
    LoadTree(tree, mOutput);
    return tree.GetViewPointPaths().size();
  }
};

TEST_F(Merging, OptionsStandAnywhereAndUnknownOnesCount) {
  const std::string a = Plate("a.ryx");
  const std::string b = Plate("b.ryx");
  EXPECT_EQ(
      Run({a, "--auto-rename-instances", b, "--unknown", mOutput, "--merge-as-instances"}).mStatus,
      0);
  EXPECT_THAT(Names(), ElementsAre("Coordinates", "Connectivity", "Stress|F1LC1", "Stress|F1LC2",
                                   "Stress|F2LC1", "Stress|F2LC2"));
  EXPECT_EQ(Run({a, "--auto-rename-instances", b, "--suffix-file-instance", mOutput,
                 "--merge-as-instances"})
                .mStatus,
            0);
  EXPECT_EQ(Names()[4], "Coordinates|F2");
  EXPECT_EQ(Run({a, "--auto-rename-instances", "--suffix-file-instance", b, mOutput}).mStatus, 0);
  EXPECT_EQ(CountGeometries(), 2U);
}

TEST_F(Merging, ArrangesASeriesByItsNumbers) {
  const std::vector<std::string> files = {Plate("run10.ryx", 10), Plate("run2.ryx", 2)};
  const auto firstFile = [&](const std::string& option) {
    EXPECT_EQ(Run({option, "--merge-as-instances", files[0], files[1], mOutput}).mStatus, 0);
    QovRyx::Tree tree(false);
    LoadTree(tree, mOutput);
    const auto* mesh = QovRyx::AsGeometry(tree.GetNodes().GetReqNode(PlateIds::kGeometry));
    return std::get<float>(mesh->GetVariables()[2].mAttributes.at("load"));
  };
  EXPECT_EQ(firstFile("--arrange-files"), 2.0F);
  EXPECT_EQ(firstFile("--Arrange-files"), 10.0F);
}

TEST_F(Merging, LogEndsWithWhatCameOfIt) {
  const std::string a = Plate("a.ryx");
  const std::string b = Plate("b.ryx");
  QovRyx::Tree other("PlateMaker", "1.0", false);
  BuildPlate(other, {"Stress|LC1"}, 3);
  AddNode<QovRyx::Geometry>(other, PlateIds::kGroup, "Stray")
      .AppendVariable(MakeVariable("Area", 12, QovRyx::NumericArray::Of(Ramp(5, 0.0F))));
  SaveTree(other, mDir / "other.ryx");
  // A first file whose node of that id is no geometry.
  QovRyx::Tree first("PlateMaker", "1.0", false);
  BuildPlate(first, {"Stress|LC1", "Stress|LC2"}, 1);
  AddNode<QovRyx::Group>(first, PlateIds::kGroup, "Group");
  SaveTree(first, mDir / "first.ryx");

  const auto summary = [this] {
    std::string text;
    std::istringstream lines(ReadFile(mLog));
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("RyxMerge : ")) text += line.substr(line.find("@ ") + 2) + "\n";
    }
    return text;
  };
  ASSERT_EQ(Run({a, b, mOutput}).mStatus, 0);
  const auto numBytes = [](const std::string& path) { return ReadFile(path).size(); };
  EXPECT_THAT(summary(), testing::ContainsRegex("Merged 2 files as datasets in [0-9]+.[0-9]+ s\n"
                                                "Nodes: 11 written, 0 of further files left out\n"
                                                "Results: 8 copied, 0 linked, 0 dropped\n"));
  EXPECT_THAT(summary(), EndsWith("Bytes: " + std::to_string(numBytes(a) + numBytes(b)) +
                                  " read, " + std::to_string(numBytes(mOutput)) + " written\n"));
  ASSERT_EQ(Run({"--merge-as-instances", a, b, mOutput}).mStatus, 0);
  EXPECT_THAT(summary(), HasSubstr("as instances in"));
  EXPECT_THAT(summary(), HasSubstr("Nodes: 5 written, 5 of further files left out\n"
                                   "Results: 8 copied, 2 linked, 0 dropped\n"));
  ASSERT_EQ(Run({"--merge-as-instances", "--auto-rename-instances", mDir / "first.ryx",
                 mDir / "other.ryx", mOutput})
                .mStatus,
            0);
  EXPECT_THAT(summary(), HasSubstr("Results: 5 copied, 0 linked, 3 dropped (2 without an instance "
                                   "part, 1 of nodes that are no geometries in the first file)\n"));
  ASSERT_EQ(Run({a, Views("v.vpt"), mOutput}).mStatus, 0);
  EXPECT_THAT(summary(), HasSubstr("Added the views of 1 files in "));
}

TEST_F(Merging, AddsViewPointsToAMergeOnceAndLeavesTheCopy) {
  const std::vector<std::string> arguments = {Views("v.vpt"), Plate("a.ryx"), Plate("b.ryx"),
                                              Views("w.vpt"), mOutput};
  EXPECT_EQ(Run(arguments).mErr, mLogMessage);
  EXPECT_EQ(CountPaths(), 2U);
  const std::string copy = ReadFile(mOutput + ".temp");
  EXPECT_FALSE(copy.empty());

  const Outcome again = Run(arguments);
  EXPECT_EQ(again.mStatus, 3);
  EXPECT_THAT(again.mErr, EndsWithOneLineOfTheProgram());
  EXPECT_EQ(std::count(again.mErr.begin(), again.mErr.end(), '\n'), 2);
  EXPECT_EQ(ReadFile(mOutput + ".temp"), copy);
}

TEST_F(Merging, AddsViewPointsToOneModelWithoutACopy) {
  EXPECT_EQ(Run({Views("v.vpt"), Plate("a.ryx"), mOutput}).mStatus, 0);
  EXPECT_EQ(CountPaths(), 1U);
  EXPECT_FALSE(Exists(mOutput + ".temp"));
}

TEST_F(Merging, FailedMergeGetsNoViewPoints) {
  const std::string earlier = ReadFile(Plate("out.ryx", 7));
  const Outcome outcome = Run({Plate("a.ryx"), mDir / "missing.ryx", Views("v.vpt"), mOutput});
  EXPECT_EQ(outcome.mStatus, 3);
  EXPECT_THAT(outcome.mErr, EndsWithOneLineOfTheProgram());
  EXPECT_EQ(ReadFile(mOutput), earlier);
  EXPECT_FALSE(Exists(mOutput + ".temp"));
}

TEST_F(Merging, TakesMoreInputsThanItMayOpen) {
  constexpr std::uint32_t kNumFiles = 300;
  std::vector<std::string> arguments;
  for (std::uint32_t i = 1; i <= kNumFiles; ++i) {
    arguments.push_back(Plate("run" + std::to_string(i) + ".ryx", i));
  }
  arguments.push_back(mOutput);
  mSurroundings.mMaxOpenFiles = 64;
  EXPECT_EQ(Run(arguments).mErr, mLogMessage);
  EXPECT_EQ(CountGeometries(), kNumFiles);
  arguments.insert(arguments.begin(), {"--merge-as-instances", "--suffix-file-instance"});
  EXPECT_EQ(Run(arguments).mErr, mLogMessage);
  EXPECT_EQ(Names().back(), "Stress|F300LC2");
  EXPECT_EQ(Names().size(), 4 * kNumFiles);
}

TEST_F(Merging, BlockSizeDoesNotChangeTheModel) {
  const std::vector<std::string> modes = {"--merge-as-datasets", "--merge-as-instances"};
  SavePlate(mDir / "a.ryx", {"Stress|LC1", "Mass"}, 1, 3000);
  SavePlate(mDir / "b.ryx", {"Stress|LC1", "Mass"}, 2, 1700);
  for (const std::string& mode : modes) {
    const std::vector<std::string> arguments = {mode, mDir / "a.ryx", mDir / "b.ryx", mOutput};
    mSurroundings.mEnvironment.erase("TELMORAX_MAX_RYX_BLOCK_SIZE");
    ASSERT_EQ(Run(arguments).mStatus, 0);
    const std::string expected = DescribeModel(mOutput);
    const std::size_t wholeSize = ReadFile(mOutput).size();
    for (const char* size : {"1000000", "5000", "100"}) {
      mSurroundings.mEnvironment["TELMORAX_MAX_RYX_BLOCK_SIZE"] = size;
      ASSERT_EQ(Run(arguments).mStatus, 0) << size;
      EXPECT_EQ(DescribeModel(mOutput), expected) << size;
    }
    // The limit did something: small blocks compress worse and fill the index.
    EXPECT_GT(ReadFile(mOutput).size(), wholeSize + 10000);
  }
}

}  // namespace
