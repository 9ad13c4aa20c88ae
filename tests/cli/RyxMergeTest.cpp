#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <set>

#include "LedgerFixture.h"
#include "merge/MergeChecks.h"
#include "support/Files.h"
#include "support/ModelCompare.h"
#include "support/ScopedEnvironment.h"
#include "support/SharedModels.h"
#include "support/Soundness.h"

/// The subcommand `ryx merge`.
namespace Qov::Test {
namespace {

using namespace QovRyx;
using testing::HasSubstr;

class RyxMerge : public LedgerTest {
 protected:
  /// Writes a plate with the mesh of all plates, and with a path of views.
  void Plate(const std::string& name, const Strings& results) const {
    SaveModel(name, [&](Tree& tree) {
      BuildPlate(tree, results, 1);
      AddViewPointPath(tree, name, 2);
    });
  }
  std::set<std::string> ListFiles() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(mDir.GetPath())) {
      names.insert(entry.path().filename());
    }
    return names;
  }

  /// Changes one value of a result, or removes a node.
  static void PlantFault(Tree& tree, std::uint32_t seed) {
    bool isDone = false;
    ForEachGeometry(tree.GetNodes(), [&](std::uint32_t, Geometry& geometry) {
      for (std::size_t i = 0; i < geometry.GetVariables().size() && !isDone; ++i) {
        std::vector<std::uint32_t> values;
        const NumericArray& array = geometry.GetVariables()[i].mValues;
        array.GetValues(values);
        if (values.empty()) continue;
        values[seed % values.size()] ^= 1;
        geometry.EditVariable(i).mValues = NumericArray::Of(values, array.GetWidth());
        isDone = true;
      }
    });
    if (isDone) return;
    for (auto& [id, entry] : tree.GetNodes()) {
      if (entry.mData) return entry.mData->SetName("planted");
    }
  }

  const ScopedEnvironment mDate{"SOURCE_DATE_EPOCH", "0"};
};

TEST_F(RyxMerge, ShowsWhatItDid) {
  Plate("run1.ryx", {"Stress|LC1", "Heat|LC1"});
  Plate("run2.ryx", {"Stress|LC2"});
  Plate("run10.ryx", {"Stress|LC10"});
  for (const char* folder : {"day", "night"}) {
    std::filesystem::create_directory(mDir / folder);
    Plate(std::string(folder) + "/run1.ryx", {"Stress|LC1"});
  }
  SaveModel("other.ryx", [](Tree& tree) { BuildPlate(tree, {"Stress|LC1"}, 2, 30); });
  SaveViewPointFile(mDir / "walk.vpt", "walk");
  ExpectTranscript("ryx_merge.txt");
}

TEST_F(RyxMerge, RefusesBadInput) {
  Plate("a.ryx", {"Stress|LC1"});
  Plate("b.ryx", {"Stress|LC2"});
  WriteFile(mDir / "text.ryx", "no model");
  WriteFile(mDir / "cut.ryx", ReadFile(mDir / "a.ryx").substr(0, 3000));
  SaveViewPointFile(mDir / "walk.vpt", "walk");
  ExpectTranscript("ryx_merge_refusals.txt");
}

/// Merges random models with every kind of request. The comparison with the inputs must accept each
/// output, and find every change of it.
TEST_F(RyxMerge, IsVerified) {
  const std::pair<const char*, void (*)(MergeRequest&)> kinds[] = {
      {"auto", [](MergeRequest&) {}},
      {"stem", [](MergeRequest& r) { r.mNames = MergedNames::Stem; }},
      {"keep", [](MergeRequest& r) { r.mNames = MergedNames::Keep; }},
      {"number", [](MergeRequest& r) { r.mNames = MergedNames::Number; }},
      {"not shared", [](MergeRequest& r) { r.mShare = false; }},
      {"all views", [](MergeRequest& r) { r.mViews = MergedViews::All; }},
      {"no views", [](MergeRequest& r) { r.mViews = MergedViews::None; }},
      {"datasets", [](MergeRequest& r) { r.mMode = MergeMode::Datasets; }},
      {"joined", [](MergeRequest& r) { r.mJoin = true; }},
      {"results", [](MergeRequest& r) { r.mSelection.mWithoutResults = {"Stress"}; }},
      {"instances", [](MergeRequest& r) { r.mSelection.mWithoutInstances = {"*1"}; }},
      {"nodes", [](MergeRequest& r) { r.mSelection.mWithoutNodes = {"3"}; }},
  };
  SaveViewPointFile(mDir / "walk.vpt", "walk");
  for (std::uint32_t seed = 1; seed <= 6; ++seed) {
    RandomSeries series(seed);
    const Strings inputs = {series.Save(mDir / "a.ryx"), series.Save(mDir / "b.ryx"),
                            mDir / "walk.vpt", series.Save(mDir / "c.ryx")};
    for (const auto& [name, change] : kinds) {
      SCOPED_TRACE(std::string(name) + ", seed " + std::to_string(seed));
      MergeRequest request;
      request.mInputs = inputs;
      request.mOutput = mOutput;
      request.mSettings.mOverwrite = true;
      change(request);
      QovRyx::Merge(request);
      const Tools::Faults faults = Tools::VerifyMerge(request, mOutput);
      EXPECT_EQ(faults.GetCount(), 0U);
      for (const Tools::Fault& fault : faults.GetFirst()) {
        ADD_FAILURE() << fault.mNode << " " << Unbarred(fault.mSubject) << ": " << fault.mText;
      }
      Tree tree(false);
      LoadTree(tree, mOutput);
      PlantFault(tree, seed);
      SaveTree(tree, mDir / "planted.ryx");
      EXPECT_NE(Tools::VerifyMerge(request, mDir / "planted.ryx").GetCount(), 0U);
      if (HasFailure()) return;
    }
  }
}

/// `ryx verify` takes the options of `ryx merge`, and finds each change of the output.
TEST_F(RyxMerge, IsVerifiedByTheCommand) {
  const auto build = [](std::uint32_t seed) {
    return [seed](Tree& tree) { BuildPlate(tree, {"Heat|LC1", "Stress|LC1", "Load|LC2"}, seed); };
  };
  const Strings inputs = {SaveModel("run10.ryx", build(1)), SaveModel("run2.ryx", build(2))};
  const std::vector<Strings> kinds = {
      {},
      {"--natural-order"},
      {"--as", "datasets"},
      {"--as", "instances", "--names", "keep"},
      {"--names", "number", "--first-number", "3"},
      {"--no-share"},
      {"--views", "none"},
      {"--results", "Stress", "--results", "Load"},
      {"--without-instances", "LC1", "--as", "datasets"},
  };
  const std::pair<const char*, void (*)(Geometry&)> faults[] = {
      {"swapped", [](Geometry& g) { std::swap(g.EditVariable(0), g.EditVariable(1)); }},
      {"removed", [](Geometry& g) { g.RemoveVariables({true}); }},
      {"linked",
       [](Geometry& g) {
         g.EditVariable(0).mLink = ResultLink({99, 0});
       }},
  };
  const std::string planted = mDir / "planted.ryx";
  for (const Strings& kind : kinds) {
    SCOPED_TRACE(testing::PrintToString(kind));
    ASSERT_EQ(Run(Joined(Joined({"merge", "--overwrite", "-o", mOutput}, kind), inputs)).mStatus,
              0);
    const Outcome outcome = Verify(kind, inputs);
    EXPECT_EQ(outcome.mStatus, 0) << outcome.mOut << outcome.mErr;
    EXPECT_THAT(outcome.mOut, HasSubstr("merged by ryx merge as "));
    const auto expectFound = [&](const char* name, const std::function<void(Tree&)>& plant) {
      Tree tree(false);
      LoadTree(tree, mOutput);
      plant(tree);
      SaveTree(tree, planted);
      const Strings command = Joined(Joined({"verify"}, kind), {planted});
      EXPECT_EQ(Run(Joined(command, inputs)).mStatus, 1) << name;
    };
    expectFound("value", [](Tree& tree) { PlantFault(tree, 5); });
    for (const auto& [name, change] : faults) {
      expectFound(name, [plant = change](Tree& tree) {
        bool isDone = false;
        ForEachGeometry(tree.GetNodes(), [&](std::uint32_t, Geometry& geometry) {
          if (!std::exchange(isDone, true)) plant(geometry);
        });
      });
    }
  }
}

TEST_F(RyxMerge, ReadsLongLists) {
  Plate("a.ryx", {"Stress|LC1"});
  std::ofstream list(mDir / "list");
  constexpr int kNumPaths = 300;
  for (int i = 0; i < kNumPaths; ++i) {
    const std::string name = "run" + std::to_string(kNumPaths - i) + ".ryx";
    std::filesystem::create_hard_link(mDir / "a.ryx", mDir / name);
    list << (mDir / name) << '\n';
  }
  list.close();
  const Outcome outcome = Run({"merge", "--from", mDir / "list", "--natural-order", "--names",
                               "number", "--json", "-o", mOutput});
  const Tools::Json report = ParseJson(outcome, "merge");
  ASSERT_EQ(outcome.mStatus, 0) << outcome.mErr;
  EXPECT_EQ(report["inputs"].size(), kNumPaths);
  EXPECT_EQ(report["inputs"][1], mDir / "run2.ryx");
  EXPECT_EQ(report["instanceNames"].back(), "F300");
}

/// A signal at any time leaves the output of before or a complete one, and nothing else.
TEST_F(RyxMerge, IsEndedBySignals) {
  constexpr int kNumRuns = 30;
  constexpr const char* kBefore = "an output of before";
  for (const char* name : {"a.ryx", "b.ryx"}) SavePlate(mDir / name, {"Stress|LC1"}, 0, 50000);
  WriteFile(mOutput, kBefore);
  const std::set<std::string> files = ListFiles();
  const Strings command = {RYX_PROGRAM,    "merge", "--overwrite", mDir / "a.ryx",
                           mDir / "b.ryx", "-o",    mOutput};
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  ASSERT_EQ(RunProgram(command, mSurroundings).mStatus, 0);
  const std::chrono::duration<double, std::micro> whole = Clock::now() - start;
  const std::string merged = ReadFile(mOutput);
  std::mt19937 random(1);
  int numEnded = 0;
  for (int i = 0; i < kNumRuns; ++i) {
    WriteFile(mOutput, kBefore);
    const int signal = i % 2 == 0 ? SIGINT : SIGTERM;
    const auto delay = static_cast<unsigned>(random()) % static_cast<unsigned>(whole.count());
    const Outcome outcome = RunProgram(command, mSurroundings, signal, delay);
    EXPECT_TRUE(outcome.mStatus == 0 || outcome.mStatus == 128 + signal) << outcome.mErr;
    numEnded += outcome.mStatus != 0;
    const std::string output = ReadFile(mOutput);
    EXPECT_TRUE(output == merged || (outcome.mStatus != 0 && output == kBefore));
    EXPECT_EQ(ListFiles(), files);
  }
  EXPECT_GT(numEnded, 0);
}

TEST_F(RyxMerge, StoresTheMeshOfASeriesOnce) {
  Strings inputs;
  for (int i = 1; i <= 5; ++i) {
    inputs.push_back(FindSharedModel("real/segment_run" + std::to_string(i) + ".ryx"));
    if (inputs.back().empty()) GTEST_SKIP() << "the shared models are not there";
  }
  const Outcome outcome = Run(Joined({"merge", "--json", "--verify", "-o", mOutput}, inputs));
  ASSERT_EQ(outcome.mStatus, 0) << outcome.mErr;
  const Tools::Json report = ParseJson(outcome, "merge");
  EXPECT_EQ(report["mode"], "instances");
  EXPECT_GT(report["shared"]["linked"], 0);
}

}  // namespace
}  // namespace Qov::Test
