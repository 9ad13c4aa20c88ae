#include <algorithm>
#include <cmath>
#include <limits>

#include "ryxFixture.h"

namespace Qov::Test {
namespace {

using QovRyx::Geometry;
using QovRyx::Group;
using QovRyx::NodeSets;
using QovRyx::NodeTree;
using QovRyx::NumericArray;
using testing::HasSubstr;
using Tools::Json;

class RyxLs : public RyxProgram {
 protected:
  /// An entry whose links are what they are.
  static void PutGroup(QovRyx::Tree& tree, std::uint32_t id, std::uint32_t nextSibling,
                       std::uint32_t firstChild) {
    NodeTree::Node entry;
    entry.mId = id;
    entry.mNextSibling = nextSibling;
    entry.mFirstChild = firstChild;
    entry.mData = std::make_unique<Group>("Group " + std::to_string(id));
    tree.GetNodes().PutNode(std::move(entry));
  }
};

TEST_F(RyxLs, ShowsModelsAndViewPointFiles) {
  ASSERT_EQ(Run({"sample", mDir / ""}).mStatus, 0);
  const Outcome outcome =
      Run({"ls", mDir / "plate.ryx", mDir / "steps/run3.ryx", mDir / "plate.vpt"});
  EXPECT_EQ(outcome.mStatus, 0);
  EXPECT_EQ(outcome.mErr, "");
  ExpectGolden("ls_samples.txt", outcome.mOut);
}

void BuildOddResults(Geometry& geometry) {
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  const auto add = [&geometry](const char* name, std::uint32_t kind, NumericArray values) {
    geometry.AppendVariable(MakeVariable(name, kind, std::move(values)));
  };
  add("Holes|LC1", 12, NumericArray::Of(std::vector<float>{kNaN, 1.5F, -2.0F, kNaN}));
  add("Nothing but holes|LC1", 12, NumericArray::Of(std::vector<float>{kNaN}));
  add("Endless", 12, NumericArray::Of(std::vector<float>{-kInfinity, 0.0F, kInfinity}));
  add("Broken items", 13, NumericArray::Of(std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8}, 3));
  add("Empty|", 12, NumericArray());
  add("Large ids", 9, NumericArray::Of(std::vector<std::uint32_t>{4294967295U, 16777217U}));
  add("No kind", Geometry::kNoKind, NumericArray::Of(std::vector<float>{0.1F}));
  add("A name that is longer than any column should have to be", 12,
      NumericArray::Of(std::vector<float>{7}));
  Geometry::VarStruct labels =
      MakeVariable("Labels|LC1", 40, NumericArray::Of(std::vector<std::uint32_t>{3, 4000000000U}));
  labels.mKindHighByte = 5;
  geometry.AppendVariable(std::move(labels));
}

void BuildOddLinks(Geometry& geometry) {
  geometry.AppendVariable(MakeLinked("To holes", {3, 0}));
  geometry.AppendVariable(MakeLinked("To a link", {4, 0}));
  geometry.AppendVariable(MakeLinked("To a group", {2, 0}));
  geometry.AppendVariable(MakeLinked("To no node", {77, 1}));
  geometry.AppendVariable(MakeLinked("To no result", {3, 99}));
  geometry.AppendVariable(MakeLinked("To itself", {4, 5}));
}

TEST_F(RyxLs, ShowsOddResultsAndLinks) {
  const std::string path = SaveModel("odd.ryx", [](QovRyx::Tree& tree) {
    Group& group = AddNode<Group>(tree, NodeTree::kRootId, "Top");
    group.mAttributes = {
        {"text", std::string("say \"hi\"\n")}, {"whole", 4.0}, {"tiny", 1e-30F}, {"count", 4U}};
    BuildOddResults(AddNode<Geometry>(tree, 2, "Values"));
    BuildOddLinks(AddNode<Geometry>(tree, 2, "Links"));
    AddNode<Geometry>(tree, 2, "Without results");
    AddNode<NodeSets>(tree, 2, "Without sets");
    AddNode<QovRyx::FutureNode>(tree, 2, "Not known yet");
  });
  const Outcome outcome = Run({"ls", path});
  EXPECT_EQ(outcome.mStatus, 0) << outcome.mErr;
  ExpectGolden("ls_odd.txt", outcome.mOut);
}

TEST_F(RyxLs, FiltersKeepTheNodesAbove) {
  ASSERT_EQ(Run({"sample", mDir / ""}).mStatus, 0);
  const std::string path = mDir / "assembly.ryx";
  const Outcome named = Run({"ls", path, "--name", "Post [34]", "--type", "geometry"});
  EXPECT_EQ(named.mStatus, 0) << named.mErr;
  const Outcome numbered = Run({"ls", "--node", "5", "--node", "84", path, "--no-results"});
  const Outcome none = Run({"ls", path, "--name", "Post", "--json"});
  ExpectGolden("ls_filters.txt", named.mOut + numbered.mOut);
  EXPECT_EQ(ParseJson(none, "ls")["files"][0]["nodes"], Json::array());
  const Outcome outcome = Run({"ls", path, "--type", "NodeSets", "--json"});
  const Json nodes = ParseJson(outcome, "ls")["files"][0]["nodes"];
  EXPECT_EQ(nodes.back()["sets"].size(), 2U);
  EXPECT_FALSE(nodes.front().contains("attributes"));
}

TEST_F(RyxLs, WithoutResultsNoValuesAreRead) {
  const std::string path = SaveModel(
      "model.ryx", [](QovRyx::Tree& tree) { BuildOddResults(AddNode<Geometry>(tree, 1, "G")); });
  std::string bytes = ReadFile(path);
  for (std::size_t i = 2810; i < 2830; ++i) bytes[i] = 'x';
  WriteFile(path, bytes);
  EXPECT_EQ(Run({"ls", "--no-results", path}).mStatus, 0);
  EXPECT_EQ(Run({"ls", "--node", "1", path}).mStatus, 0);
  EXPECT_EQ(Run({"ls", "--node", "2", path}).mStatus, 2);
}

TEST_F(RyxLs, DocumentHoldsTheSame) {
  const std::string path = SaveModel("odd.ryx", [](QovRyx::Tree& tree) {
    Group& group = AddNode<Group>(tree, NodeTree::kRootId, "Top \\ \xFF\x9B");
    group.mAttributes = {{"whole", 4.0}, {"tiny", 1e-30F}, {"nan", std::nanf("")}};
    AddNode<Geometry>(tree, 2, "Values");
    BuildOddResults(*QovRyx::AsGeometry(tree.GetNodes().GetReqNode(3)));
    BuildOddLinks(AddNode<Geometry>(tree, 2, "Links"));
    PutGroup(tree, 9, 99, 2);
  });
  const Outcome outcome = Run({"ls", "--json", path});
  EXPECT_EQ(outcome.mStatus, 0) << outcome.mErr;
  const Json nodes = ParseJson(outcome, "ls")["files"][0]["nodes"];
  EXPECT_EQ(nodes[0]["name"], "Top \\\\ \\xFF\\x9B");
  EXPECT_EQ(nodes[0]["attributes"]["nan"]["value"], "NaN");
  const Json& results = nodes[1]["results"];
  EXPECT_EQ(results[0]["name"], "Holes\x1ELC1");
  EXPECT_EQ(results[0]["nan"], 2);
  EXPECT_EQ(results[2]["minimum"], "-Infinity");
  EXPECT_EQ(results[3]["rest"], 2);
  EXPECT_EQ(results[5]["maximum"], 4294967295U);
  EXPECT_EQ(results[6]["maximum"], 0.1);
  const Json& links = nodes[2]["results"];
  EXPECT_EQ(links[1]["link"], Json::parse(R"({"node": 4, "result": 0, "found": true,
                                              "nodeName": "Links", "resultName": "To holes"})"));
  EXPECT_EQ(links[5]["link"]["found"], false);
  EXPECT_EQ(nodes[3]["astray"], true);
  EXPECT_EQ(nodes.back()["missing"], true);
}

TEST_F(RyxLs, SendsNoByteOfANameThatCouldDoHarm) {
  const std::string path = SaveModel("evil\033[2J.ryx", [](QovRyx::Tree& tree) {
    AddNode<Group>(tree, NodeTree::kRootId, "red \033[31m\r\n\x7F bell \a");
    AddNode<Group>(tree, NodeTree::kRootId, "C1 \xC2\x9B, turned \xE2\x80\xAE, bad \xFF\xC3(");
    AddNode<Group>(tree, NodeTree::kRootId, "back\\slash \\x1E, letters \xC3\xA4\xE2\x82\xAC");
    NodeSets& sets = AddNode<NodeSets>(tree, NodeTree::kRootId, "\tsets");
    sets.SetSets({{"\033]0;title\a", {1, 2, 3}}});
    AddViewPointPath(tree, "path\033c", 1);
    tree.GetViewPoint().mName = "view\b";
    tree.GetSequencerData().mName = "sequencer\v";
  });
  const Outcome outcome = Run({"ls", path});
  EXPECT_EQ(outcome.mStatus, 0) << outcome.mErr;
  ExpectGolden("ls_escapes.txt", outcome.mOut);
  const Outcome failed = Run({"ls", mDir / "none\033[2J"});
  EXPECT_EQ(std::count(failed.mErr.begin(), failed.mErr.end(), '\033'), 0) << failed.mErr;
}

TEST_F(RyxLs, FollowsBrokenTreesToAnEnd) {
  const std::string path = SaveModel("broken.ryx", [](QovRyx::Tree& tree) {
    tree.GetNodes().GetReqNode(NodeTree::kRootId).mFirstChild = 2;
    PutGroup(tree, 2, 3, 4);
    PutGroup(tree, 3, 2, 99);  // a circle of siblings, and a child that is not there
    PutGroup(tree, 4, 0, 2);   // a child that is its own grandparent
    PutGroup(tree, 5, 0, 6);   // no link leads to these two
    PutGroup(tree, 6, 0, 0);
    NodeTree::Node empty;
    empty.mId = 7;
    tree.GetNodes().PutNode(std::move(empty));
  });
  const Outcome outcome = Run({"ls", path});
  EXPECT_EQ(outcome.mStatus, 0) << outcome.mErr;
  ExpectGolden("ls_broken_tree.txt", outcome.mOut);
}

TEST_F(RyxLs, SurvivesAHundredThousandLevels) {
  constexpr std::uint32_t kDepth = 100000;
  const std::string path = SaveModel("deep.ryx", [](QovRyx::Tree& tree) {
    for (std::uint32_t i = 1; i <= kDepth; ++i) AddNode<Group>(tree, i, "G");
  });
  const Outcome outcome = Run({"ls", path});
  EXPECT_EQ(outcome.mStatus, 0);
  EXPECT_THAT(outcome.mOut, HasSubstr("[level 100000] G [Group 100001]\n"));
  EXPECT_LT(outcome.mOut.size(), kDepth * 200U);
}

TEST_F(RyxLs, ShowsWhatCanBeReadAndSaysWhatCannot) {
  const std::string path = SaveModel("cut.ryx", [](QovRyx::Tree& tree) {
    BuildPlate(tree, {"Stress|LC1"}, 1);
    AddViewPointPath(tree, "walk", 2);
  });
  std::string bytes = ReadFile(path);
  constexpr std::size_t kInHeavyData = 2900;
  bytes[kInHeavyData] = static_cast<char>(~bytes[kInHeavyData]);
  WriteFile(path, bytes);
  const Outcome outcome = Run({"ls", mDir / "none.ryx", path});
  EXPECT_EQ(outcome.mStatus, 2);
  EXPECT_THAT(outcome.mOut, HasSubstr("Stress\\x1ELC1"));
  EXPECT_THAT(outcome.mOut, HasSubstr("(cannot be read: "));
  EXPECT_THAT(outcome.mOut, HasSubstr("path walk (2 views)"));
  EXPECT_THAT(outcome.mErr, HasSubstr("none.ryx: Unable to open file"));
  EXPECT_THAT(outcome.mErr, HasSubstr("cut.ryx: parts of it cannot be read\n"));
}

TEST_F(RyxLs, TellsInOneLineWhyAFileIsNoModel) {
  WriteFile(mDir / "text", "This is not a model, whatever it is called.\n");
  WriteFile(mDir / "empty", "");
  QovJbf::JbFile container;
  container.OpenFile(mDir / "container", "wb+");
  container.WriteHeader();
  container.GetIndex().WriteAllBuffersToFileStream(container.GetStream());
  container.CloseFile();
  const Outcome outcome = Run({"ls", mDir / "text", mDir / "empty", mDir / "container", mDir / ""});
  EXPECT_EQ(outcome.mStatus, 2);
  EXPECT_EQ(outcome.mOut, "");
  ExpectGolden("ls_no_models.txt", outcome.mErr);
}

}  // namespace
}  // namespace Qov::Test
