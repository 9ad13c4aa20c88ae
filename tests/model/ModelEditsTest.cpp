#include "Qov/Ryx/ModelEdits.h"

#include <gtest/gtest.h>

#include "Qov/Ryx/ValueOwners.h"
#include "support/Errors.h"
#include "support/ModelCompare.h"
#include "support/TempDir.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;

using Names = std::vector<std::string>;

/// Fills geometry 2 with A to H, and geometry 3 with X to Z. Only A, D and Y have values.
void BuildChains(Tree& tree) {
  Geometry& first = AddNode<Geometry>(tree, 1, "first");
  first.AppendVariable(MakeVariable("A", 12, NumericArray::Of(Ramp(4, 1.0F))));
  first.AppendVariable(MakeLinked("B", {2, 0}));
  first.AppendVariable(MakeLinked("C", {2, 1}));
  first.AppendVariable(MakeCarrier("D", 50));
  first.AppendVariable(MakeLinked("E", {2, 9}));  // dangling
  first.AppendVariable(MakeLinked("F", {2, 6}));  // a cycle of F and G
  first.AppendVariable(MakeLinked("G", {2, 5}));
  first.AppendVariable(MakeLinked("H", {2, 4}));
  Geometry& second = AddNode<Geometry>(tree, 1, "second");
  second.AppendVariable(MakeLinked("X", {2, 0}));
  second.AppendVariable(MakeVariable("Y", 4, NumericArray::Of(Count(3, 7))));
  second.AppendVariable(MakeLinked("Z", {3, 1}));
  second.EditVariable(2).mKind = 12;
}

ResultPredicate Named(const std::string& names) {
  return [names](const ResultPlace&, const Geometry::VarStruct& result) {
    return names.find(result.mName) != std::string::npos;
  };
}

Names AllTexts(const Tree& tree) {
  Names all;
  ForEachGeometry(tree.GetNodes(), [&all](std::uint32_t, const Geometry& geometry) {
    for (const std::string& text : VariableTexts(geometry)) all.push_back(text);
  });
  return all;
}

/// Returns the values of each result by its name, as a reader of the saved model gets them.
std::map<std::string, std::vector<std::uint32_t>> ReadValues(Tree& tree) {
  const TempDir folder;
  SaveTree(tree, folder / "model.ryx");
  Tree loaded(false);
  LoadTree(loaded, folder / "model.ryx");
  const ValueOwners owners(loaded.GetNodes());
  std::map<std::string, std::vector<std::uint32_t>> all;
  ForEachGeometry(loaded.GetNodes(), [&](std::uint32_t, const Geometry& geometry) {
    for (const auto& result : geometry.GetVariables()) {
      std::vector<std::uint32_t>& values = all[result.mName];
      result.mValues.GetValues(values);
      values.push_back(result.mValues.GetWidth());
      if (values.size() > 1) values.push_back(owners.HoldUnsigned(result) ? 1 : 0);
    }
  });
  return all;
}

struct Removal {
  std::set<std::uint32_t> mNodes;
  std::string mResults;
  Names mLeft;  ///< As VariableTexts.
  std::uint64_t mLinksReplaced = 0;
};

TEST(ModelEdits, LinksFollowAndTakeValuesAlong) {
  const std::vector<Removal> removals = {
      {{},
       "",
       {"A", "B -> 2,0", "C -> 2,1", "D", "E -> 2,9", "F -> 2,6", "G -> 2,5", "H -> 2,4",
        "X -> 2,0", "Y", "Z -> 3,1"},
       0},
      {{},
       "A",
       {"B", "C -> 2,0", "D", "E -> 2,9", "F -> 2,5", "G -> 2,4", "H -> 2,3", "X -> 2,0", "Y",
        "Z -> 3,1"},
       2},
      {{},
       "B",
       {"A", "C -> 2,0", "D", "E -> 2,9", "F -> 2,5", "G -> 2,4", "H -> 2,3", "X -> 2,0", "Y",
        "Z -> 3,1"},
       1},
      {{}, "ABE", {"C", "D", "F -> 2,3", "G -> 2,2", "H", "X -> 2,0", "Y", "Z -> 3,1"}, 3},
      {{}, "DGXY", {"A", "B -> 2,0", "C -> 2,1", "E -> 2,9", "F", "H -> 2,3", "Z"}, 2},
      {{2}, "", {"X", "Y", "Z -> 3,1"}, 1},
      {{3}, "A", {"B", "C -> 2,0", "D", "E -> 2,9", "F -> 2,5", "G -> 2,4", "H -> 2,3"}, 1},
      {{2, 3}, "", {}, 0}};
  for (const Removal& removal : removals) {
    SCOPED_TRACE(removal.mResults + " " + testing::PrintToString(removal.mNodes));
    Tree tree(false);
    BuildChains(tree);
    const auto before = ReadValues(tree);
    const RemovedContent removed =
        RemoveContent(tree.GetNodes(), removal.mNodes, Named(removal.mResults));
    EXPECT_EQ(AllTexts(tree), removal.mLeft);
    EXPECT_EQ(removed.mNodes, removal.mNodes.size());
    EXPECT_EQ(removed.mResults, 11 - removal.mLeft.size());
    EXPECT_EQ(removed.mLinksReplaced, removal.mLinksReplaced);
    for (const auto& [name, values] : ReadValues(tree)) EXPECT_EQ(values, before.at(name)) << name;
  }
}

TEST(ModelEdits, KeepTheIndexOfNamesAndRefuseWhatIsNotThere) {
  Tree tree(false);
  BuildChains(tree);
  ExpectError(ErrorType::InvalidMethod, "root", [&] { RemoveContent(tree.GetNodes(), {1, 2}); });
  ExpectError(ErrorType::ElementNotFound, "", [&] { RemoveContent(tree.GetNodes(), {2, 9}); });
  Geometry& geometry = *AsGeometry(tree.GetNodes().GetReqNode(2));
  EXPECT_EQ(geometry.FindVariable("D"), 3U);
  RemoveContent(tree.GetNodes(), {}, Named("AC"));
  EXPECT_EQ(geometry.FindVariable("A"), std::nullopt);
  EXPECT_EQ(geometry.FindVariable("D"), 1U);
  EXPECT_EQ(geometry.GetOrAddVariableIndex("C"), 6U);

  // More results than the chunks of a list hold.
  for (std::uint32_t i = 0; i < 600; ++i) {
    geometry.AppendVariable(MakeVariable("many" + std::to_string(i), 12, {}));
  }
  RemoveContent(tree.GetNodes(), {},
                [](const ResultPlace& place, const auto&) { return place.mPosition % 3 != 0; });
  ASSERT_EQ(geometry.GetVariables().size(), 203U);
  EXPECT_EQ(geometry.FindVariable("many599"), 202U);
  geometry.AppendVariable(MakeVariable("last", 12, {}));
  EXPECT_EQ(geometry.FindVariable("last"), 203U);
}

}  // namespace
}  // namespace Qov::Test
