#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>

#include "LedgerFixture.h"
#include "StreamDamage.h"
#include "support/BuildKind.h"
#include "support/Files.h"
#include "support/SharedModels.h"

namespace Qov::Test {
namespace {

using Tools::Json;

class RyxPlan : public LedgerTest {
 protected:
  std::string Plate(const std::string& name,
                    const Strings& results = {"Stress|LC1", "Stress|LC2"}) {
    SavePlate(mDir / name, results, 1);
    return mDir / name;
  }
};

TEST_F(RyxPlan, ShowsSharedAndOmittedResultsAndObstacles) {
  Plate("run10.ryx");
  Plate("run2.ryx", {"Heat|LC1", "Stress|LC1"});
  SaveViewPointFile(mDir / "walk.vpt", "walk");
  SaveModel("other.ryx", [](QovRyx::Tree& tree) {
    BuildPlate(tree, {"Stress|LC1"}, 2);
    AddNode<QovRyx::Geometry>(tree, PlateIds::kShape, "One\033more");
  });
  ExpectTranscript("plan.txt");
}

/// Covers each kind of warning in the plan and, if the output shows it, in the verification.
TEST_F(RyxPlan, WarnsAboutUnexpectedEffects) {
  Plate("first.ryx", {"Stress|LC1"});
  Streams streams = ReadStreams(mDir / "first.ryx");
  DamageStreams(streams, "Notes: 0 + 78; Ryx Tree: Plate+-9 = 07; Ryx Tree: Plate+0 + 0078");
  WriteStreams(mDir / "dropped.ryx", streams);
  SaveModel("other.ryx", [](QovRyx::Tree& tree) {
    BuildPlate(tree, {"Stress"}, 2, 30);
    AddNode<QovRyx::Group>(tree, PlateIds::kGroup, "Clip");
    AddViewPointPath(tree, "walk", 2);
  });
  SaveModel("linked.ryx", [](QovRyx::Tree& tree) {
    BuildPlate(tree, {"Stress|LC1"}, 2);
    Mesh(tree).AppendVariable(MakeLinked("Same|LC1", {PlateIds::kGeometry, 2}));
  });
  SaveViewPointFile(mDir / "walk.vpt", "walk");
  WriteFile(mDir / "none.vpt", ReadFile(mDir / "first.ryx"));
  ExpectTranscript("plan_warnings.txt");
}

TEST_F(RyxPlan, EqualsTheLedgerOfRandomMerges) {
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

TEST_F(RyxPlan, PredictsMergesOfDifferentStructures) {
  std::size_t numMerged = 0;
  for (std::uint32_t seed = 0; seed < 20; ++seed) {
    SCOPED_TRACE(seed);
    const Strings inputs = {RandomSeries(100).Save(mDir / "one.ryx"),
                            RandomSeries(seed).Save(mDir / "other.ryx")};
    const Strings options = kMergeKinds[1 + seed % 3];
    const Outcome plan = Plan(Joined(options, {"--json"}), inputs);
    EXPECT_EQ(plan.mStatus, ParseJson(plan, "plan")["obstacles"].empty() ? 0 : 1);
    if (plan.mStatus == 0) {
      ExpectAsPlanned(options, inputs);
      ++numMerged;
    } else {
      EXPECT_EQ(Merge(options, inputs), 2);
    }
  }
  EXPECT_GT(numMerged, 0U);
  EXPECT_LT(numMerged, 20U);
}

TEST_F(RyxPlan, EqualsTheLedgerOfViewsAddedToOneModel) {
  const Strings inputs = {mDir / "a.vpt", Plate("plate.ryx"), mDir / "b.vpt"};
  SaveViewPointFile(inputs[0], "first");
  SaveViewPointFile(inputs[2], "second");
  ExpectAsPlanned({}, inputs);
  const Json plan =
      ParseJson(Run({"plan", "--json", inputs[1], inputs[0], inputs[2], "x"}), "plan");
  EXPECT_EQ(CountRule(plan["ledger"], "view replaced"), 1U);
  EXPECT_EQ(CountRule(plan["ledger"], "sequencer replaced"), 1U);
}

/// Groups the shared models of one run in the order of their names, every second one twice.
std::vector<Strings> FindSeries() {
  std::set<std::string> paths;
  std::error_code ignored;
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(SharedModelsDir(), ignored)) {
    if (entry.path().extension() == ".ryx") paths.insert(entry.path().string());
  }
  std::map<std::string, Strings> series;
  for (const std::string& path : paths) {
    series[std::regex_replace(path, std::regex("(run)[0-9]+\\.ryx$"), "$1")].push_back(path);
  }
  std::vector<Strings> found;
  for (auto& [name, files] : series) {
    if (files.size() == 1) files.push_back(files.front());  // a model can be merged with itself
    found.push_back(files);
  }
  return found;
}

TEST_F(RyxPlan, EqualsTheLedgerOfSharedModels) {
  std::vector<Strings> series = FindSeries();
  if (series.empty()) GTEST_SKIP() << "no shared models";
  const auto find = FindSharedModel;
  series.push_back({find("plate_version_0.5.ryx"), find("plate_more_load.ryx"), find("plate.vpt"),
                    find("oldest.vpt")});
  std::size_t turn = 0;
  for (const Strings& inputs : series) {
    for (const Strings& options : kMergeKinds) {
      if (kIsSlow && turn++ % 3 != 0) continue;
      SCOPED_TRACE(inputs.front() + testing::PrintToString(options));
      ExpectAsPlanned(Joined(options, {"--arrange-files"}), inputs);
    }
  }
  ExpectAsPlanned({}, {find("plate.ryx"), find("plate.vpt"), find("oldest.vpt"), find("more.vpt")});
  ExpectAsPlanned({}, {find("assembly.ryx"), find("assembly_more_cuts.ryx")});
  // A merged model can be an input.
  std::filesystem::rename(mOutput, mDir / "merged.ryx");
  ExpectAsPlanned({}, {mDir / "merged.ryx", find("plate.ryx")});
  ASSERT_EQ(Merge(kMergeKinds[2], {find("plate.ryx"), find("plate_more_load.ryx")}), 0);
  std::filesystem::rename(mOutput, mDir / "merged.ryx");
  for (const Strings& options : kMergeKinds) {
    ExpectAsPlanned(options, {mDir / "merged.ryx", find("plate_no_cases.ryx")});
  }
}

/// Merges results so that each rule drops some of them.
TEST_F(RyxPlan, CountsDroppedItemsByRule) {
  const std::string first = SaveModel("first.ryx", [](QovRyx::Tree& tree) {
    BuildPlate(tree, {"A", "A|LC1", "A|LC2"}, 1);
    QovRyx::AsGeometry(tree.GetNodes().GetReqNode(PlateIds::kGeometry))
        ->AppendVariable(MakeLinked("Link to a replaced result|LC1", {PlateIds::kGeometry, 4}));
    AddNode<QovRyx::FutureNode>(tree, PlateIds::kGroup, "no mesh here");
    AddNode<QovRyx::Geometry>(tree, PlateIds::kShape, "More");
  });
  const std::string further = SaveModel("further.ryx", [](QovRyx::Tree& tree) {
    BuildPlate(tree, {"B|LC1"}, 2);
    const auto add = [&tree](const char* name, const char* values) {
      auto& mesh = AddNode<QovRyx::Geometry>(tree, PlateIds::kGroup, name);
      mesh.AppendVariable(MakeCarrier(values, 7));
    };
    add("no mesh in the first", "C|LC1");
    add("More", "D|LC1");
    auto& more = *QovRyx::AsGeometry(tree.GetNodes().GetReqNode(7));
    more.AppendVariable(MakeLinked("To the passed over|LC1", {6, 0}));
    more.EditVariable(1).mKind = 12;
    more.AppendVariable(MakeLinked("To a neighbour|LC1", {7, 0}));
  });
  const auto count = [&](const char* option, const char* rule) {
    const Strings options = {"--merge-as-instances", option};
    ExpectAsPlanned(options, {first, further});
    const bool isReplaced = std::string(option) == "--arrange-files";
    EXPECT_EQ(Plan(options, {first, further}).mOut.find("[values-replaced]") != std::string::npos,
              isReplaced);
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

}  // namespace
}  // namespace Qov::Test
