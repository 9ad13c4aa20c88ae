#include "LedgerFixture.h"

#include <filesystem>
#include <nlohmann/json.hpp>

namespace Qov::Test {

int LedgerTest::Merge(const Strings& options, const Strings& inputs) {
  std::filesystem::remove(mOutput);
  std::filesystem::remove(mOutput + ".temp");
  const Strings command = Joined(Joined(Joined({RYXMERGE_PROGRAM}, options), inputs), {mOutput});
  return RunProgram(command, {{{"PELORIN_TEMP_PATH", mDir.GetPath().string()}}}).mStatus;
}

Outcome LedgerTest::Plan(const Strings& options, const Strings& inputs) const {
  return Run(Joined(Joined(Joined({"plan"}, options), inputs), {mOutput}));
}

Outcome LedgerTest::Verify(const Strings& options, const Strings& inputs) const {
  return Run(Joined(Joined(Joined({"verify"}, options), {mOutput}), inputs));
}

void LedgerTest::ExpectAsPlanned(const Strings& options, const Strings& inputs) {
  std::filesystem::remove(mOutput);
  std::filesystem::remove(mOutput + ".temp");
  const Tools::Json plan = ParseJson(Plan(Joined(options, {"--json"}), inputs), "plan");
  ASSERT_TRUE(plan["obstacles"].empty()) << plan["obstacles"];
  EXPECT_FALSE(std::filesystem::exists(mOutput));
  ASSERT_EQ(Merge(options, inputs), 0);
  const Tools::Json found = ParseJson(Verify(Joined(options, {"--json"}), inputs), "verify");
  EXPECT_EQ(found["addsUp"], true) << found["differences"];
  EXPECT_EQ(plan["mode"], found["mode"]);
  EXPECT_EQ(plan["ledger"], found["ledger"]);
}

std::uint64_t LedgerTest::CountRule(const Tools::Json& ledger, const std::string& rule) {
  std::uint64_t count = 0;
  const auto add = [&](const Tools::Json& items, const char* list) {
    for (const Tools::Json& item : items) {
      for (const Tools::Json& entry : item[list]) {
        if (entry["rule"] == rule) count += entry["count"].get<std::uint64_t>();
      }
    }
  };
  for (const Tools::Json& input : ledger["inputs"]) add(input["items"], "dropped");
  add(ledger["output"], "made");
  return count;
}

std::string RandomSeries::Save(const std::string& path) {
  QovRyx::Tree tree("Tester", "1.0", false);
  RandomModel(mSeed).Fill(tree);
  std::vector<std::uint32_t> ids{0, 1, 2};
  QovRyx::ForEachGeometry(tree.GetNodes(), [&](std::uint32_t id, auto&) { ids.push_back(id); });
  QovRyx::ForEachGeometry(tree.GetNodes(), [&](std::uint32_t, QovRyx::Geometry& geometry) {
    for (std::uint32_t left = mRandom.Below(9); left > 0; --left) AddResult(geometry, ids);
  });
  SaveTree(tree, path);
  return path;
}

void RandomSeries::AddResult(QovRyx::Geometry& geometry, const std::vector<std::uint32_t>& ids) {
  static const Strings kNames = {"Stress|LC1", "Stress|LC2", "Heat|LC10", "Stress",  "Heat|",
                                 "Heat",       "a|b|LC1",    "Heat|LC1",  "Heat|LC2"};
  const auto pick = [this](std::size_t n) { return mRandom.Below(static_cast<std::uint32_t>(n)); };
  const std::string& name = kNames[pick(kNames.size())];
  if (mRandom.Below(3) == 0) {
    const std::uint32_t node = ids[pick(ids.size())];
    geometry.AppendVariable(MakeLinked(name, {node, mRandom.Below(20)}));
    return;
  }
  const auto start = static_cast<float>(mRandom.Below(1000));
  geometry.AppendVariable(
      MakeVariable(name, mRandom.Below(12), QovRyx::NumericArray::Of(Ramp(5, start))));
}

}  // namespace Qov::Test
