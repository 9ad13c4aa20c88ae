#include "merge/Select.h"

#include <fnmatch.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>

#include "Qov/Ryx/ValueOwners.h"
#include "support/Errors.h"
#include "support/ModelCompare.h"
#include "support/RandomModel.h"
#include "support/TempDir.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;

using Words = std::vector<std::string>;

/// Adds a plate (ids 2 to 5) and a wing (ids 6 and 7), whose mesh belongs to two instances.
void BuildPlateAndWing(Tree& tree) {
  BuildPlate(tree, {"Stress|LC1", "Stress|LC2", "Strain|LC1", "Mass"}, 1, 4);
  AddNode<Group>(tree, 1, "Wings");
  Geometry& wing = AddNode<Geometry>(tree, 6, "Wing [A]");
  wing.AppendVariable(MakeVariable("Coordinates|LC1", 0, NumericArray::Of(Ramp(6, 1.0F), 3)));
  wing.AppendVariable(MakeLinked("Coordinates|LC2", {7, 0}));
  wing.AppendVariable(MakeLinked("Stress|LC2", {4, 3}));
}

/// Returns the ids of all nodes but the root, each geometry with its results.
std::string TreeText(const Tree& tree) {
  std::string text;
  for (const auto& [id, entry] : tree.GetNodes()) {
    if (id == NodeTree::kRootId) continue;
    text += (text.empty() ? "" : " ") + std::to_string(id);
    const Geometry* geometry = AsGeometry(entry);
    if (geometry == nullptr) continue;
    text += "(";
    for (const std::string& name : VariableTexts(*geometry)) {
      text += (text.back() == '(' ? "" : ", ") + name;
    }
    text += ")";
  }
  return text;
}

constexpr const char* kPlate =
    "2 3 4(Coordinates, Connectivity, Stress|LC1, Stress|LC2, Strain|LC1, Mass) 5";
constexpr const char* kWing = "6 7(Coordinates|LC1, Coordinates|LC2 -> 7,0, Stress|LC2 -> 4,3)";

TEST(Select, KeepsWhatIsChosen) {
  struct Case {
    Selection mSelection;
    std::string mLeft;
    std::uint64_t mLinksReplaced = 0;
    Words mNotes = {};
  };
  const std::string plate = kPlate;
  const std::string wing = kWing;
  const std::string ownStress = "6 7(Coordinates|LC1, Coordinates|LC2 -> 7,0, Stress|LC2)";
  const Words wingName = {"Wing [A]"};
  const std::vector<Case> cases = {
      {{}, plate + " " + wing},
      {{.mNodes = wingName}, ownStress, 1},  // a name with brackets; its parents stay
      {{.mNodes = {"W*", "9*", "8"}},
       ownStress,
       1,
       {"\"9*\" chooses nothing: no node matches it", "\"8\" chooses nothing: no node matches it"}},
      {{.mNodes = {"2"}, .mWithoutNodes = {"Se?s", "[A-R]"}},
       "2 3 4(Coordinates, Connectivity, Stress|LC1, Stress|LC2, Strain|LC1, Mass)",
       0,
       {"\"[A-R]\" leaves out nothing: no node matches it"}},
      {{.mWithoutNodes = {"6"}}, plate},
      {{.mResults = {"Stress"}, .mWithoutResults = {Barred("*|LC1"), "Coord*"}},
       "2 3 4(Coordinates, Connectivity, Stress|LC2) 5 "
       "6 7(Coordinates|LC1, Coordinates|LC2 -> 7,0, Stress|LC2 -> 4,2)",
       0,
       {"\"Coord*\" leaves out nothing: no result matches it"}},
      {{.mWithoutResults = {"*"}},
       "2 3 4(Coordinates, Connectivity) 5 6 7(Coordinates|LC1, Coordinates|LC2 -> 7,0)"},
      {{.mWithoutResults = {"Coordinates", "*s*", "Mass"}},
       "2 3 4(Connectivity, Strain|LC1) 5 6 7()"},
      {{.mInstances = {"LC2"}},
       "2 3 4(Coordinates, Connectivity, Stress|LC2, Mass) 5 "
       "6 7(Coordinates|LC2, Stress|LC2 -> 4,2)",
       1},
      {{.mWithoutInstances = {"LC2"}},
       "2 3 4(Coordinates, Connectivity, Stress|LC1, Strain|LC1, Mass) 5 6 7(Coordinates|LC1)"},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.mLeft);
    Tree tree(false);
    BuildPlateAndWing(tree);
    const SelectionCounts counts = ApplySelection(tree, each.mSelection);
    EXPECT_EQ(TreeText(tree), each.mLeft);
    EXPECT_EQ(counts.mLinksReplaced, each.mLinksReplaced);
    EXPECT_EQ(counts.mNotes, each.mNotes);
    EXPECT_EQ(counts.mNodesLeftOut, 7 - tree.GetNodes().GetSize());
  }
}

TEST(Select, RefusesToChooseNothing) {
  const std::vector<std::pair<Selection, std::string>> cases = {
      {{.mNodes = {"Skn", "9"}}, "No node matches \"Skn\" or \"9\""},
      {{.mResults = {"stress"}}, "No result matches \"stress\""},
      {{.mNodes = {"Wings"}, .mResults = {"Mass"}}, "No result matches \"Mass\""},
      {{.mInstances = {"LC"}}, "No instance matches \"LC\""},
      {{.mNodes = {"Plate"}, .mWithoutNodes = {"P*"}}, "The selection leaves out all nodes"},
      {{.mWithoutNodes = {"*"}}, "The selection leaves out all nodes"}};
  for (const auto& [selection, message] : cases) {
    Tree tree(false);
    BuildPlateAndWing(tree);
    ExpectError(ErrorType::ElementNotFound, message,
                [&, &chosen = selection] { ApplySelection(tree, chosen); });
    EXPECT_EQ(TreeText(tree), std::string(kPlate) + " " + kWing);
  }
}

class RandomSelectionTest : public testing::TestWithParam<std::uint32_t> {
 protected:
  /// Gives some results the names of mesh arrays, and instance parts.
  void NameResults(Tree& tree) {
    ForEachGeometry(tree.GetNodes(), [this](std::uint32_t, Geometry& geometry) {
      for (std::size_t i = 0; i != geometry.GetVariables().size(); ++i) {
        std::string name = geometry.GetVariables()[i].mName;
        if (mRandom.Below(8) == 0) name = "Node Ids";
        if (mRandom.Below(3) == 0)
          name +=
              "\x1E"
              "LC" +
              std::to_string(mRandom.Below(3));
        geometry.RenameVariable(i, name);
      }
    });
  }

  /// Links many results to any others, so that several lead to the same one.
  void LinkResults(Tree& tree) {
    std::vector<ResultPlace> places;
    ForEachGeometry(tree.GetNodes(), [&places](std::uint32_t id, const Geometry& geometry) {
      for (std::uint32_t i = 0; i != geometry.GetVariables().size(); ++i) places.push_back({id, i});
    });
    for (const ResultPlace& place : places) {
      if (mRandom.Below(2) == 0) continue;
      Geometry& geometry = *AsGeometry(tree.GetNodes().GetReqNode(place.mNode));
      const auto number = mRandom.Below(static_cast<std::uint32_t>(places.size()));
      geometry.EditVariable(place.mPosition).mLink = ResultLink(places[number]);
    }
  }

  Words SomeIds(const Tree& tree, std::uint32_t limit) {
    Words words;
    for (std::uint32_t left = mRandom.Below(limit); left > 0; --left) {
      words.push_back(std::to_string(1 + mRandom.Below(tree.GetNodes().GetNextId() - 1)));
    }
    return words;
  }

  RandomModel mRandom{GetParam()};
};

/// Says independently of the selection's own code if a node or one above it is named by its id.
bool IsBelowOne(const NodeTree& nodes, std::uint32_t id, const Words& ids) {
  for (; id != 0; id = nodes.GetReqNode(id).mParent) {
    if (std::find(ids.begin(), ids.end(), std::to_string(id)) != ids.end()) return true;
  }
  return false;
}

std::set<std::uint32_t> ExpectedNodes(const NodeTree& nodes, const Selection& selection) {
  std::set<std::uint32_t> expected{1};
  Words without = selection.mWithoutNodes;
  std::erase(without, "1");
  for (const auto& [id, entry] : nodes) {
    const bool isChosen = selection.mNodes.empty() || IsBelowOne(nodes, id, selection.mNodes);
    if (!isChosen || IsBelowOne(nodes, id, without)) continue;
    for (std::uint32_t at = id; at != 0; at = nodes.GetReqNode(at).mParent) expected.insert(at);
  }
  return expected;
}

/// The same for results: one word in each list of names, which is a pattern.
bool IsExpected(const std::string& name, const Selection& selection) {
  const auto fits = [](const std::string& text, const Words& words) {
    return std::any_of(words.begin(), words.end(), [&](const std::string& word) {
      return fnmatch(word.c_str(), text.c_str(), FNM_NOESCAPE) == 0;
    });
  };
  const std::size_t separator = name.rfind('\x1E');
  const std::string base = name.substr(0, separator);
  const std::string instance = separator == name.npos ? "" : name.substr(separator + 1);
  const auto chosenBy = [&](const Words& words) { return fits(base, words) || fits(name, words); };
  if (!instance.empty() && !selection.mInstances.empty() && !fits(instance, selection.mInstances))
    return false;
  if (!instance.empty() && fits(instance, selection.mWithoutInstances)) return false;
  if (base == "Node Ids") return true;
  return (selection.mResults.empty() || chosenBy(selection.mResults)) &&
         !chosenBy(selection.mWithoutResults);
}

/// Describes a result as a reader sees it, wherever its values are stored.
std::string AsRead(const Geometry::VarStruct& result, const ValueOwners& owners) {
  std::ostringstream out;
  out << result.mName << " " << result.mKind << " " << int{result.mFlag} << " ";
  Describe(out, result.mValues);
  Describe(out, result.mAttributes);
  // The kind of a result that takes values along can forbid the type of another kind.
  const bool canBeAny = !result.IsIntegerKind() && result.mKind != Geometry::kNoKind;
  if (canBeAny && result.mValues.GetNumElements() != 0) out << owners.HoldUnsigned(result);
  return out.str();
}

TEST_P(RandomSelectionTest, LeavesExactlyWhatIsChosenAsItWas) {
  const TempDir folder;
  Tree made(false);
  mRandom.Fill(made);
  NameResults(made);
  LinkResults(made);
  SaveTree(made, folder / "all.ryx");
  Tree before(false);
  Tree part(false);
  LoadTree(before, folder / "all.ryx");
  LoadTree(part, folder / "all.ryx");

  const std::array<Words, 4> patterns = {Words{}, Words{"[!-z]*"}, Words{"?*"},
                                         Words{"*[5-\x7F]*"}};
  const Selection selection{.mNodes = SomeIds(made, 6),
                            .mWithoutNodes = SomeIds(made, 3),
                            .mResults = patterns[mRandom.Below(4)],
                            .mWithoutResults = mRandom.Below(3) == 0 ? Words{"[a-z]*"} : Words{},
                            .mInstances = mRandom.Below(3) == 0 ? Words{"LC[01]"} : Words{},
                            .mWithoutInstances = mRandom.Below(3) == 0 ? Words{"*1"} : Words{}};
  try {
    ApplySelection(part, selection);
  } catch (const Qov::Util::Exception& error) {
    EXPECT_EQ(error.GetType(), ErrorType::ElementNotFound);
    EXPECT_EQ(DescribeModel(part), DescribeModel(before));
    return;
  }
  SaveTree(part, folder / "part.ryx");
  Tree after(false);
  LoadTree(after, folder / "part.ryx");

  std::set<std::uint32_t> ids;
  for (const auto& [id, entry] : after.GetNodes()) ids.insert(id);
  EXPECT_EQ(ids, ExpectedNodes(before.GetNodes(), selection));
  const ValueOwners ownersBefore(before.GetNodes());
  const ValueOwners ownersAfter(after.GetNodes());
  ForEachGeometry(after.GetNodes(), [&](std::uint32_t id, const Geometry& geometry) {
    Words expected;
    for (const auto& result : AsGeometry(before.GetNodes().GetReqNode(id))->GetVariables()) {
      if (IsExpected(result.mName, selection)) expected.push_back(AsRead(result, ownersBefore));
    }
    Words found;
    for (const auto& result : geometry.GetVariables()) found.push_back(AsRead(result, ownersAfter));
    EXPECT_EQ(found, expected) << id;
  });
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomSelectionTest, testing::Range(1U, 61U));

}  // namespace
}  // namespace Qov::Test
