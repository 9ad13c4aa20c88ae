#include <gmock/gmock.h>

#include <cstdint>
#include <limits>

#include "Qov/Ryx/RyxMerge.h"
#include "Qov/Util/Exception.h"
#include "merge/AppendResults.h"
#include "support/ModelBuilder.h"
#include "support/ModelCompare.h"

namespace QovRyx {
namespace {

using namespace Qov::Test;
using testing::ElementsAre;

std::vector<std::string> Last(const std::vector<std::string>& texts, std::ptrdiff_t number) {
  return {texts.end() - number, texts.end()};
}

class AppendingResults : public testing::Test {
 protected:
  static constexpr std::uint32_t kId = 2;

  AppendingResults() {
    for (const char* name : {"A", "B", "C", "D", "E"}) Append(mTarget, name);
    Append(mSource, "S|1");
    Append(mSource, "T");
    mSource.AppendVariable(MakeLinked("U|1", {kId, 0}));
    Append(mSource, "A");
  }
  static void Append(Geometry& geometry, const std::string& name) {
    geometry.AppendVariable(MakeVariable(name, 12, NumericArray::Of(Ramp(3, 1.0F))));
  }

  Tree mInto{false};
  Tree mFrom{false};
  Geometry& mTarget = AddNode<Geometry>(mInto, NodeTree::kRootId, "Mesh");
  Geometry& mSource = AddNode<Geometry>(mFrom, NodeTree::kRootId, "Mesh");
};

TEST_F(AppendingResults, KeepsTheOrderAndMovesLinks) {
  AppendResults(mFrom, mInto, true);
  EXPECT_THAT(VariableTexts(mTarget),
              ElementsAre("A", "B", "C", "D", "E", "S|1", "T", "U|1 -> 2,5", "A"));
  std::vector<float> values;
  mTarget.GetVariables()[5].mValues.GetValues(values);
  EXPECT_EQ(values, Ramp(3, 1.0F));
}

TEST_F(AppendingResults, OtherInstancesNeedAnInstancePartAndLinksBecomeSelfLinks) {
  Append(mSource, "V|");
  AppendOtherInstanceResults(mFrom, mInto);
  EXPECT_THAT(VariableTexts(mTarget), ElementsAre("A", "B", "C", "D", "E", "S|1", "U|1 -> 2,6"));
}

TEST_F(AppendingResults, LinkPositionsDoNotOverflow) {
  constexpr std::uint32_t kHighest = std::numeric_limits<std::uint32_t>::max();
  mSource.AppendVariable(MakeLinked("Nowhere", {kId, kHighest - 1}));
  AppendResults(mFrom, mInto, true);
  EXPECT_EQ(mTarget.GetVariables().back().mLink.GetPlace().mPosition, kHighest - 1);
}

TEST_F(AppendingResults, LinksToOtherGeometriesMove) {
  Geometry& otherTarget = AddNode<Geometry>(mInto, NodeTree::kRootId, "Other");
  Append(otherTarget, "X");
  Geometry& otherSource = AddNode<Geometry>(mFrom, NodeTree::kRootId, "Other");
  Append(otherSource, "Y|1");
  otherSource.AppendVariable(MakeLinked("Z|1", {kId, 1}));
  mSource.AppendVariable(MakeLinked("Z|1", {kId + 1, 0}));
  mSource.AppendVariable(MakeLinked("Lost|1", {kId + 1, 9}));
  mSource.EditVariable(5).mLink.LoseTarget();
  AppendResults(mFrom, mInto, true);
  EXPECT_EQ(VariableTexts(mTarget)[9], "Z|1 -> 3,1");
  EXPECT_EQ(VariableTexts(mTarget)[10], "Lost|1 -> 3,9");
  EXPECT_THAT(VariableTexts(otherTarget), ElementsAre("X", "Y|1", "Z|1 -> 2,6"));
}

/// The source has the geometries 2, 3 and 4, and chains of links through all three. The results of
/// 2 and 3 are appended; those of 4 are not, because the target has a group with this id.
class AppendingChains : public testing::Test {
 protected:
  AppendingChains() {
    for (Tree* tree : {&mFrom, &mInto}) {
      AddNode<Geometry>(*tree, NodeTree::kRootId, "First");
      AddNode<Geometry>(*tree, NodeTree::kRootId, "Second");
    }
    AddNode<Group>(mInto, NodeTree::kRootId, "Group");
    Geometry& behind = AddNode<Geometry>(mFrom, NodeTree::kRootId, "Behind");
    for (std::uint32_t i = 0; i != 9; ++i) Target(2).AppendVariable(MakeCarrier("stranger", i));
    Target(3).AppendVariable(MakeCarrier("stranger", 9));
    for (const auto& [name, link] : {std::pair<const char*, ResultPlace>{"far|1", {4, 0}},
                                     {"farther|1", {3, 1}},
                                     {"near|1", {2, 0}},
                                     {"round|1", {4, 2}},
                                     {"lost|1", {3, 7}},
                                     {"lost chain|1", {2, 4}}}) {
      Source(2).AppendVariable(MakeLinked(name, link));
    }
    Source(3).AppendVariable(MakeCarrier("values|1", 100));
    Source(3).AppendVariable(MakeLinked("over|1", {2, 0}));
    Source(3).AppendVariable(MakeLinked("over lost|1", {2, 5}));
    behind.AppendVariable(MakeLinked("behind|1", {4, 1}));
    behind.AppendVariable(MakeLinked("behind|1", {3, 0}));
    behind.AppendVariable(MakeLinked("round|1", {2, 3}));
  }
  Geometry& Source(std::uint32_t id) { return *AsGeometry(mFrom.GetNodes().GetReqNode(id)); }
  Geometry& Target(std::uint32_t id) { return *AsGeometry(mInto.GetNodes().GetReqNode(id)); }
  void ExpectOwner(std::uint32_t id, std::size_t position) {
    EXPECT_EQ(DescribeValues(Target(id).GetVariables()[position]),
              DescribeValues(MakeCarrier("", 100)))
        << id << ", " << position;
  }

  Tree mInto{false};
  Tree mFrom{false};
};

TEST_F(AppendingChains, LinksMoveOrBecomeCopiesOfTheValues) {
  AppendResults(mFrom, mInto, true);
  EXPECT_THAT(Last(VariableTexts(Target(2)), 6),
              ElementsAre("far|1", "farther|1 -> 3,2", "near|1 -> 2,9", "round|1", "lost|1 -> 3,7",
                          "lost chain|1 -> 2,13"));
  EXPECT_THAT(VariableTexts(Target(3)),
              ElementsAre("stranger", "values|1", "over|1 -> 2,9", "over lost|1 -> 2,14"));
  ExpectOwner(2, 9);
  EXPECT_EQ(Target(2).GetVariables()[12].mValues.GetNumElements(), 0U);
  EXPECT_FALSE(Target(2).GetVariables()[13].mLink.HasTarget());
}

TEST_F(AppendingChains, OtherInstancesLoseOnlyValuesOfLinksWithinAGeometry) {
  DroppedResults dropped;
  AppendOtherInstanceResults(mFrom, mInto, dropped);
  EXPECT_EQ(dropped.mLinkedToThemselves, 1U);  // near|1; lost chain|1 had no values before
  EXPECT_THAT(Last(VariableTexts(Target(2)), 6),
              ElementsAre("far|1", "farther|1", "near|1 -> 2,11", "round|1", "lost|1 -> 3,7",
                          "lost chain|1 -> 2,14"));
  EXPECT_THAT(VariableTexts(Target(3)),
              ElementsAre("stranger", "values|1", "over|1", "over lost|1"));
  for (const std::size_t position : {9U, 10U}) ExpectOwner(2, position);
  ExpectOwner(3, 2);
  EXPECT_EQ(Target(3).GetVariables()[3].mValues.GetNumElements(), 0U);
}

TEST_F(AppendingResults, SkipsTargetsThatAreNotGeometriesAndRefusesMissingOnes) {
  Geometry& second = AddNode<Geometry>(mFrom, NodeTree::kRootId, "Mesh 2");
  Append(second, "X|1");
  EXPECT_THROW(AppendResults(mFrom, mInto, true), Qov::Util::Exception);
  EXPECT_THROW(AppendOtherInstanceResults(mFrom, mInto), Qov::Util::Exception);
  AddNode<Group>(mInto, NodeTree::kRootId, "Group");
  AppendResults(mFrom, mInto, true);
  AppendOtherInstanceResults(mFrom, mInto);
  EXPECT_EQ(mInto.GetNodes().GetSize(), 3U);
}

}  // namespace
}  // namespace QovRyx
