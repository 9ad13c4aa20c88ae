#include <gtest/gtest.h>

#include "support/ModelCompare.h"
#include "support/TempDir.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;

constexpr ResultPlace kDangling{99, 0};

/// Adds two geometries, ids 2 and 3. Only variable 0 of the first is not linked.
void BuildLinks(Tree& tree, const std::vector<ResultPlace>& links) {
  Geometry& first = AddNode<Geometry>(tree, 1, "first");
  first.AppendVariable(MakeVariable("values", 12, NumericArray::Of(Ramp(4, 1.0F))));
  Geometry& second = AddNode<Geometry>(tree, 1, "second");
  for (const auto& link : links) second.AppendVariable(MakeLinked("linked", link));
}

std::vector<float> ValuesOf(const Tree& tree, std::uint32_t id, std::size_t position) {
  std::vector<float> values;
  AsGeometry(tree.GetNodes().GetReqNode(id))->GetVariables()[position].mValues.GetValues(values);
  return values;
}

TEST(Links, ChainsAreFollowedAndCyclesHaveNoValues) {
  const TempDir dir;
  Tree tree(false);
  BuildLinks(tree, {{3, 2}, {2, 0}, {3, 1}, {3, 4}, {3, 5}, {3, 3}, {3, 6}, kDangling, {2, 7}});
  SaveTree(tree, dir / "links.ryx");
  Tree loaded(false);
  LoadTree(loaded, dir / "links.ryx");
  for (std::size_t i = 0; i < 9; ++i) {
    EXPECT_EQ(ValuesOf(loaded, 3, i), i < 3 ? Ramp(4, 1.0F) : std::vector<float>()) << i;
  }
}

TEST(Links, AreShiftedWithTheIdsOfTheirFileAndStayInIt) {
  const TempDir dir;
  Tree tree(false);
  BuildLinks(tree, {{2, 0}, {0xFFFFFFFF, 3}, {5, 0}, {99, 1}, {2, 7}});
  SaveTree(tree, dir / "links.ryx");
  Tree merged(false);
  MakeMergeRoot(merged);
  LoadTree(merged, dir / "links.ryx");
  MergeFile(merged, dir / "links.ryx");
  SaveTree(merged, dir / "merged.ryx");
  Tree loaded(false);
  LoadTree(loaded, dir / "merged.ryx");
  EXPECT_EQ(VariableTexts(*AsGeometry(loaded.GetNodes().GetReqNode(4))),
            (std::vector<std::string>{"linked -> 3,0", "linked -> 4294967295,3", "linked -> 0,0",
                                      "linked -> 100,1", "linked -> 3,7"}));
  EXPECT_EQ(VariableTexts(*AsGeometry(loaded.GetNodes().GetReqNode(7)))[0], "linked -> 6,0");
  for (const std::uint32_t id : {4U, 7U}) {
    EXPECT_EQ(ValuesOf(loaded, id, 0), Ramp(4, 1.0F));
    for (const std::size_t lost : {1U, 2U, 3U, 4U}) EXPECT_TRUE(ValuesOf(loaded, id, lost).empty());
  }
  LoadTree(merged, dir / "links.ryx");
  EXPECT_EQ(ValuesOf(merged, 10, 0), Ramp(4, 1.0F));
  EXPECT_TRUE(ValuesOf(merged, 4, 2).empty());
}

TEST(Links, LongChainsAreFollowedWithoutRecursion) {
  Tree tree(false);
  const TempDir dir;
  std::vector<ResultPlace> links;
  for (std::uint32_t i = 0; i < 100000; ++i) links.push_back({3, i + 1});
  BuildLinks(tree, links);
  SaveTree(tree, dir / "chain.ryx");
  Tree loaded(false);
  LoadTree(loaded, dir / "chain.ryx");
  EXPECT_TRUE(ValuesOf(loaded, 3, 0).empty());
}

}  // namespace
}  // namespace Qov::Test
