#include <fstream>
#include <regex>

#include "LedgerFixture.h"
#include "support/SharedModels.h"

namespace Qov::Test {
namespace {

using testing::HasSubstr;
using Tools::Json;

class RyxPlan : public LedgerTest {
 protected:
  std::string Plate(const std::string& name,
                    const Strings& results = {"Stress|LC1", "Stress|LC2"}) {
    SavePlate(mDir / name, results, 1);
    return mDir / name;
  }

  /// The text without sizes that depend on the disk and on how zlib compresses.
  static std::string WithoutSizes(std::string text) {
    text = std::regex_replace(text, std::regex("about [0-9.]+ .iB in the file"), "about N");
    return std::regex_replace(text, std::regex("[0-9.]+ .iB are free"), "N are free");
  }

  Json ObstaclesOf(const Strings& options, const Strings& inputs) {
    const Outcome outcome = Plan(Joined(options, {"--json"}), inputs);
    EXPECT_EQ(outcome.mStatus, 1);
    return ParseJson(outcome, "plan")["obstacles"];
  }
};

TEST_F(RyxPlan, TellsWhatInstancesShareAndLeaveOut) {
  const Strings inputs = {Plate("run10.ryx"), Plate("run2.ryx", {"Heat|LC1", "Stress|LC1"}),
                          mDir / "walk.vpt"};
  SaveViewPointFile(inputs[2], "walk");
  const Outcome outcome = Plan({"--merge-as-instances", "--arrange-files"}, inputs);
  EXPECT_EQ(outcome.mStatus, 0) << outcome.mErr;
  ExpectGolden("plan_instances.txt", WithoutSizes(outcome.mOut));
}

TEST_F(RyxPlan, EqualsTheRecountOfRandomMerges) {
  SaveViewPointFile(mDir / "a.vpt", "first");
  SaveViewPointFile(mDir / "b2.vpt", "second");
  for (std::uint32_t seed = 0; seed < 12; ++seed) {
    RandomSeries series(seed);
    Strings inputs;
    for (const char* name : {"b1.ryx", "b3.ryx", "b2.ryx"})
      inputs.push_back(series.Save(mDir / name));
    if (seed % 3 == 0) inputs.insert(inputs.begin() + 1, {mDir / "b2.vpt", mDir / "a.vpt"});
    for (Strings options : kMergeKinds) {
      if (seed % 4 == 0) options.push_back("--arrange-files");
      SCOPED_TRACE(testing::Message() << "seed " << seed << testing::PrintToString(options));
      ExpectAsPlanned(options, inputs);
    }
  }
}

TEST_F(RyxPlan, ForetellsWhetherModelsOfDifferentStructuresMerge) {
  std::size_t numMerged = 0;
  for (std::uint32_t seed = 0; seed < 20; ++seed) {
    SCOPED_TRACE(seed);
    const Strings inputs = {RandomSeries(100).Save(mDir / "one.ryx"),
                            RandomSeries(seed).Save(mDir / "other.ryx")};
    const Strings options = kMergeKinds[1 + seed % 3];
    if (Plan(options, inputs).mStatus == 0) {
      ExpectAsPlanned(options, inputs);
      ++numMerged;
    } else {
      EXPECT_EQ(Merge(options, inputs), 2);
    }
  }
  EXPECT_GT(numMerged, 0U);
  EXPECT_LT(numMerged, 20U);
}

TEST_F(RyxPlan, EqualsTheRecountOfViewsAddedToOneModel) {
  const Strings inputs = {mDir / "a.vpt", Plate("plate.ryx"), mDir / "b.vpt"};
  SaveViewPointFile(inputs[0], "first");
  SaveViewPointFile(inputs[2], "second");
  ExpectAsPlanned({}, inputs);
  const Json plan =
      ParseJson(Run({"plan", "--json", inputs[1], inputs[0], inputs[2], "x"}), "plan");
  EXPECT_EQ(CountRule(plan["ledger"], "view replaced"), 1U);
  EXPECT_EQ(CountRule(plan["ledger"], "sequencer replaced"), 1U);
}

TEST_F(RyxPlan, EqualsTheRecountOfSharedModels) {
  const auto find = [](const Strings& names) {
    Strings paths;
    for (const std::string& name : names) {
      if (!FindSharedModel(name).empty()) paths.push_back(FindSharedModel(name));
    }
    return paths;
  };
  if (find({"plate.ryx"}).empty()) GTEST_SKIP() << "no sample models";
  const std::vector<Strings> series = {
      find({"plate_version_0.5.ryx", "plate_more_load.ryx", "plate.vpt", "oldest.vpt"}),
      find({"steps/run10.ryx", "steps/run9.ryx", "steps/run1.ryx", "more.vpt"}),
      find({"real/segment_run1.ryx", "real/segment_run2.ryx", "real/segment_run5.ryx"})};
  for (const Strings& inputs : series) {
    for (const Strings& options : kMergeKinds) {
      SCOPED_TRACE(inputs.front() + testing::PrintToString(options));
      ExpectAsPlanned(Joined(options, {"--arrange-files"}), inputs);
    }
  }
  const Strings assemblies = find({"assembly.ryx", "assembly_more_cuts.ryx"});
  ExpectAsPlanned({}, assemblies);
  EXPECT_EQ(ObstaclesOf({"--merge-as-instances"}, assemblies).size(), 2U);
}

/// Results that meet in one model in the ways that lose something.
TEST_F(RyxPlan, CountsWhatIsLostByEachRule) {
  const std::string first = SaveModel("first.ryx", [](QovRyx::Tree& tree) {
    BuildPlate(tree, {"A", "A|LC1", "A|LC2"}, 1);
    QovRyx::AsGeometry(tree.GetNodes().GetReqNode(PlateIds::kGeometry))
        ->AppendVariable(MakeLinked("To what is replaced|LC1", {PlateIds::kGeometry, 4}));
    AddNode<QovRyx::FutureNode>(tree, PlateIds::kGroup, "no mesh here");
    AddNode<QovRyx::Geometry>(tree, PlateIds::kShape, "More");
  });
  const std::string further = SaveModel("further.ryx", [](QovRyx::Tree& tree) {
    BuildPlate(tree, {"B|LC1"}, 2);
    const auto add = [&tree](const char* name, const char* values) {
      auto& mesh = AddNode<QovRyx::Geometry>(tree, PlateIds::kGroup, name);
      mesh.AppendVariable(MakeVariable(values, 12, QovRyx::NumericArray::Of(Ramp(3, 7.0F))));
    };
    add("no mesh in the first", "C|LC1");
    add("More", "D|LC1");
    auto& more = *QovRyx::AsGeometry(tree.GetNodes().GetReqNode(7));
    more.AppendVariable(MakeLinked("To the passed over|LC1", {6, 0}));
    more.AppendVariable(MakeLinked("To a neighbour|LC1", {7, 0}));
  });
  const auto count = [&](const char* option, const char* rule) {
    const Strings options = {"--merge-as-instances", option};
    ExpectAsPlanned(options, {first, further});
    return CountRule(
        ParseJson(Verify(Joined(options, {"--json"}), {first, further}), "verify")["ledger"], rule);
  };
  EXPECT_EQ(count("--arrange-files", "no geometry"), 1U);
  EXPECT_EQ(count("--arrange-files", "unlinked"), 2U);  // dropped as a link, made as a result
  EXPECT_EQ(count("--arrange-files", "shared name"), 1U);
  EXPECT_EQ(count("--arrange-files", "link replaced"), 2U);
  EXPECT_EQ(count("--auto-rename-instances", "linked to itself"), 2U);
  EXPECT_EQ(count("--auto-rename-instances", "no instance part"), 2U);
}

TEST_F(RyxPlan, NamesTheNodesThatTheFirstModelLacks) {
  const std::string plate = Plate("plate.ryx");
  const std::string other = SaveModel("other.ryx", [](QovRyx::Tree& tree) {
    BuildPlate(tree, {"Stress|LC1"}, 2);
    AddNode<QovRyx::Geometry>(tree, PlateIds::kShape, "One\033more");
  });
  const Outcome outcome = Plan({"--merge-as-instances"}, {plate, other});
  EXPECT_EQ(outcome.mStatus, 1);
  EXPECT_THAT(outcome.mOut,
              HasSubstr("other.ryx: Element Not Found: geometry 6 is not in the first "
                        "model (One\\x1Bmore)\n"));
  EXPECT_EQ(Merge({"--merge-as-instances"}, {plate, other}), 2);
  EXPECT_TRUE(
      ObstaclesOf({"--merge-as-instances"}, {other, plate, mDir / "none"})[0].contains("path"));
  EXPECT_EQ(Plan({}, {plate, other}).mStatus, 0);
}

TEST_F(RyxPlan, SaysWhatStandsInTheWayOfTheFiles) {
  const std::string plate = Plate("plate.ryx");
  WriteFile(mDir / "text.ryx", "no model");
  WriteFile(mDir / "short.vpt", "short");
  WriteFile(mOutput + ".temp", "left behind");
  WriteFile(mOutput, "an old output");
  const Outcome outcome =
      Plan({}, {plate, mDir / "none.ryx", mDir / "text.ryx", mDir / "short.vpt", mOutput});
  EXPECT_EQ(outcome.mStatus, 1);
  ExpectGolden("plan_obstacles.txt", outcome.mOut);
  EXPECT_EQ(ReadFile(mOutput), "an old output");
  mOutput = mDir / "no folder/out.ryx";
  EXPECT_EQ(ObstaclesOf({}, {plate, plate})[0]["path"], mOutput);
  mOutput = mDir / "";
  EXPECT_EQ(ObstaclesOf({}, {plate, plate})[0]["text"], "is a folder");
}

TEST_F(RyxPlan, CountsAllTheSameWhenOnlyACopyIsInTheWay) {
  const Strings inputs = {Plate("a.ryx"), Plate("b.ryx"), Plate("c.ryx"), mDir / "walk.vpt"};
  SaveViewPointFile(inputs[3], "walk");
  const Strings options = {"--merge-as-instances", "--json"};
  const Json before = ParseJson(Plan(options, inputs), "plan");
  WriteFile(mOutput + ".temp", "left behind");
  const Json after = ParseJson(Plan(options, inputs), "plan");
  EXPECT_EQ(after["obstacles"].size(), 1U);
  EXPECT_EQ(after["ledger"], before["ledger"]);
}

TEST_F(RyxPlan, RefusesWhatIsNoMerge) {
  const std::string plate = Plate("plate.ryx");
  SaveViewPointFile(mDir / "a.vpt", "first");
  EXPECT_EQ(Run({"plan", plate, mOutput}).mStatus, 2);
  EXPECT_EQ(ObstaclesOf({}, {mDir / "a.vpt", mDir / "a.vpt"})[0]["text"],
            "there is no model among the inputs");
}

}  // namespace
}  // namespace Qov::Test
