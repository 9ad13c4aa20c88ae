#include <cmath>
#include <limits>

#include "ryxFixture.h"
#include "support/Streams.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;

class RyxLs : public RyxProgram {
 protected:
  /// Adds an entry with the given links.
  static void PutGroup(Tree& tree, std::uint32_t id, std::uint32_t nextSibling,
                       std::uint32_t firstChild) {
    NodeTree::Node entry;
    entry.mId = id;
    entry.mNextSibling = nextSibling;
    entry.mFirstChild = firstChild;
    entry.mData = std::make_unique<Group>("Group " + std::to_string(id));
    tree.GetNodes().PutNode(std::move(entry));
  }
};

void BuildOddResults(Geometry& geometry) {
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

TEST_F(RyxLs, ShowsModelsAndViewPointFiles) { ExpectTranscript("ls_samples.txt"); }

TEST_F(RyxLs, ShowsUnusualResultsAndLinks) {
  SaveModel("odd.ryx", [](Tree& tree) {
    Group& group = AddNode<Group>(tree, NodeTree::kRootId, "Top \\ \xFF\x9B");
    group.mAttributes = {{"text", std::string("say \"hi\"\n")},
                         {"whole", 4.0},
                         {"tiny", 1e-30F},
                         {"count", 4U},
                         {"nan", std::nanf("")}};
    BuildOddResults(AddNode<Geometry>(tree, 2, "Values"));
    BuildOddLinks(AddNode<Geometry>(tree, 2, "Links"));
    AddNode<Geometry>(tree, 2, "Without results");
    AddNode<NodeSets>(tree, 2, "Without sets");
    AddNode<FutureNode>(tree, 2, "Not known yet");
    PutGroup(tree, 9, 99, 2);
  });
  ExpectTranscript("ls_odd.txt");
}

TEST_F(RyxLs, EscapesHarmfulBytesOfNames) {
  SaveModel("evil\033[2J.ryx", [](Tree& tree) {
    AddNode<Group>(tree, NodeTree::kRootId, "red \033[31m\r\n\x7F bell \a");
    AddNode<Group>(tree, NodeTree::kRootId, "C1 \xC2\x9B, turned \xE2\x80\xAE, bad \xFF\xC3(");
    AddNode<Group>(tree, NodeTree::kRootId, "back\\slash \\x1E, letters \xC3\xA4\xE2\x82\xAC");
    NodeSets& sets = AddNode<NodeSets>(tree, NodeTree::kRootId, "\tsets");
    sets.SetSets({{"\033]0;title\a", {1, 2, 3}}});
    AddViewPointPath(tree, "path\033c", 1);
    tree.GetViewPoint().mName = "view\b";
    tree.GetSequencerData().mName = "sequencer\v";
  });
  ExpectTranscript("ls_escapes.txt");
}

TEST_F(RyxLs, ShowsDamagedAndDeepTrees) {
  SaveModel("broken.ryx", [](Tree& tree) {
    tree.GetNodes().GetReqNode(NodeTree::kRootId).mFirstChild = 2;
    PutGroup(tree, 2, 3, 4);
    PutGroup(tree, 3, 2, 99);  // a cycle of siblings, and a missing child
    PutGroup(tree, 4, 0, 2);   // a child that is its own grandparent
    PutGroup(tree, 5, 0, 6);   // not reached by any link
    PutGroup(tree, 6, 0, 0);
    NodeTree::Node empty;
    empty.mId = 7;
    tree.GetNodes().PutNode(std::move(empty));
  });
  SaveModel("deep.ryx", [](Tree& tree) {
    for (std::uint32_t i = 1; i <= 100000; ++i) AddNode<Group>(tree, i, "G");
  });
  ExpectTranscript("ls_broken_trees.txt");
}

TEST_F(RyxLs, ShowsReadablePartsAndReportsErrors) {
  SaveModel("cut.ryx", [](Tree& tree) {
    BuildPlate(tree, {"Stress|LC1"}, 1);
    AddViewPointPath(tree, "walk", 2);
  });
  WriteStreams(mDir / "container", {});
  ExpectTranscript("ls_damaged.txt");
}

}  // namespace
}  // namespace Qov::Test
