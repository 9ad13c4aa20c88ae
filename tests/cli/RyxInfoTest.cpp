#include <algorithm>
#include <filesystem>

#include "ryxFixture.h"
#include "support/SharedModels.h"
#include "support/Streams.h"

namespace Qov::Test {
namespace {

using QovRyx::Geometry;
using testing::HasSubstr;
using testing::Not;
using Tools::Json;

class RyxInfo : public RyxProgram {
 protected:
  RyxInfo() { EXPECT_EQ(Run({"sample", mDir / ""}).mStatus, 0); }

  /// A file whose every byte is known: its blocks are plain and its history is old.
  std::string SaveFixed() {
    const std::string path = SaveModel("fixed.ryx", [](QovRyx::Tree& tree) {
      BuildPlate(tree, {"Stress|LC1", "Stress|Long name \033[31m of a load case"}, 1);
      Geometry& links = AddNode<Geometry>(tree, PlateIds::kShape, "Links");
      links.AppendVariable(MakeLinked("Again", {PlateIds::kGeometry, 0}));
      links.AppendVariable(MakeLinked("Lost", {PlateIds::kGroup, 0}));
      AddViewPointPath(tree, "walk", 2);
    });
    Streams streams = ReadStreams(path);
    QovJbf::JbFile file;
    std::vector<QovRyx::ModifierInfo> history(2);
    history[0] = {false, "First", "1.0", "1.2", "Tue Jan 02 10:20:30 2018 UTC", "host", "me", "x"};
    history[1] = {false, "Second", "2.0", "1.3", "Tue Jan 02 10:20:31 2018 UTC", "", "", ""};
    file.GetIndex().Put("Global Information", history);
    streams.erase("Global Information");
    for (const auto& [name, bytes] : streams) {
      file.GetIndex().Put(name, bytes.data(), bytes.size());
    }
    WriteTo(file, path);
    return path;
  }
};

TEST_F(RyxInfo, ShowsAFileOnOneScreen) {
  const Outcome outcome = Run({"info", SaveFixed()});
  EXPECT_EQ(outcome.mStatus, 0) << outcome.mErr;
  ExpectGolden("info_fixed.txt", outcome.mOut);
}

TEST_F(RyxInfo, DocumentHoldsTheSame) {
  const Outcome outcome = Run({"info", "--json", SaveFixed(), mDir / "plate.vpt"});
  EXPECT_EQ(outcome.mStatus, 0) << outcome.mErr;
  const Json files = ParseJson(outcome, "info")["files"];
  const Json& model = files[0]["model"];
  EXPECT_EQ(model["nodes"],
            Json::parse(R"({"none": 1, "Geometry": 2, "Group": 1, "NodeSets": 1, "Shape": 1})"));
  EXPECT_EQ(model["linked"], 2);
  EXPECT_EQ(model["lost"], 1);
  EXPECT_EQ(model["values"], 3 * 40 + 40 + 2 * 40);
  EXPECT_EQ(model["instances"][1], "Long name \033[31m of a load case");
  EXPECT_EQ(files[0]["history"].size(), 2U);
  std::uint64_t stored = 2800;
  for (const Json& stream : files[0]["streams"]) {
    stored += stream["stored"].get<std::uint64_t>();
    EXPECT_EQ(stream["stored"], stream["uncompressed"]);
  }
  EXPECT_EQ(files[0]["size"], stored);
  EXPECT_TRUE(files[1]["model"].is_null());
  EXPECT_EQ(files[1]["views"]["paths"][0]["views"][1], "Right");
}

TEST_F(RyxInfo, MeasuresHeavyDataWithoutReadingThem) {
  const std::string path = mDir / "plate.ryx";
  std::string bytes = ReadFile(path);
  for (std::size_t i = 2810; i < 2900; ++i) bytes[i] = 'x';  // not the length in front of them
  WriteFile(path, bytes);
  const Outcome outcome = Run({"info", path});
  EXPECT_EQ(outcome.mStatus, 0) << outcome.mErr;
  EXPECT_THAT(outcome.mOut, HasSubstr("89224"));
}

TEST_F(RyxInfo, ShowsWhatCanBeReadOfDamagedFiles) {
  const std::string whole = ReadFile(mDir / "assembly.ryx");
  WriteFile(mDir / "cut.ryx", whole.substr(0, whole.size() - 10));
  WriteFile(mDir / "half.ryx", whole.substr(0, whole.size() / 2));
  WriteFile(mDir / "text", "This is not a model.\n");
  const std::vector<std::string> files = {"info", mDir / "cut.ryx", mDir / "half.ryx",
                                          mDir / "text", mDir / "none"};
  const Outcome text = Run(files);
  EXPECT_EQ(text.mStatus, 2);
  EXPECT_THAT(text.mOut, HasSubstr("(cannot be read: "));
  EXPECT_THAT(text.mOut, Not(HasSubstr("none")));
  ExpectGolden("info_damaged.txt", text.mErr);

  std::vector<std::string> withJson = files;
  withJson.emplace_back("--json");
  const Outcome outcome = Run(withJson);
  EXPECT_EQ(outcome.mStatus, 2);
  EXPECT_EQ(outcome.mErr, text.mErr);
  const Json list = ParseJson(outcome, "info")["files"];
  ASSERT_EQ(list.size(), 4U);
  for (const Json& file : list) EXPECT_TRUE(file.contains("trouble")) << file;
  EXPECT_EQ(list[0]["views"]["current"], "Home of rack");
  EXPECT_EQ(list[1]["streams"].size(), 7U);
}

/// What one subcommand counts is what the others list and print.
TEST_F(RyxInfo, AgreesWithListsAndDumpsOnSharedModels) {
  if (!std::filesystem::is_directory(SharedModelsDir())) GTEST_SKIP() << "no shared models";
  for (const auto& entry : std::filesystem::recursive_directory_iterator(SharedModelsDir())) {
    if (entry.path().extension() != ".ryx") continue;
    const std::string path = entry.path().string();
    SCOPED_TRACE(path);
    const Json info = ParseJson(Run({"info", "--json", path}), "info")["files"][0]["model"];
    const Json list = ParseJson(Run({"ls", "--json", path}), "ls")["files"][0];
    std::size_t numResults = 0;
    for (const Json& node : list["nodes"]) {
      if (!node.contains("results")) continue;
      numResults += node["results"].size();
      if (node["results"].empty()) continue;
      const Json& last = node["results"].back();
      const Outcome dump = Run({"dump", path, std::to_string(node["id"].get<unsigned>()),
                                std::to_string(node["results"].size() - 1)});
      EXPECT_EQ(dump.mStatus, 0) << dump.mErr;
      EXPECT_EQ(std::count(dump.mOut.begin(), dump.mOut.end(), '\n'), last["count"]);
    }
    EXPECT_EQ(info["results"], numResults);
  }
}

}  // namespace
}  // namespace Qov::Test
