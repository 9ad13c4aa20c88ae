#include <gmock/gmock.h>

#include <cstdint>
#include <limits>

#include "Qov/Ryx/RyxMerge.h"
#include "Qov/Util/Exception.h"
#include "support/ModelBuilder.h"

namespace QovRyx {
namespace {

using namespace Qov::Test;
using testing::ElementsAre;

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

TEST_F(AppendingResults, AllFollowInOrderAndLinksLeadToTheSameResults) {
  AppendResults(mFrom, mInto, true);
  EXPECT_THAT(VariableTexts(mTarget),
              ElementsAre("A", "B", "C", "D", "E", "S|1", "T", "U|1 -> 2,5", "A"));
  std::vector<float> values;
  mTarget.GetVariables()[5].mValues.GetValues(values);
  EXPECT_EQ(values, Ramp(3, 1.0F));
}

TEST_F(AppendingResults, OfOtherInstancesOnlyNamesWithAnInstancePartAndLinksToThemselves) {
  Append(mSource, "V|");
  AppendOtherInstanceResults(mFrom, mInto);
  EXPECT_THAT(VariableTexts(mTarget), ElementsAre("A", "B", "C", "D", "E", "S|1", "U|1 -> 2,6"));
}

TEST_F(AppendingResults, LinkPositionDoesNotWrapRoundToAResultThatIsThere) {
  constexpr std::uint32_t kHighest = std::numeric_limits<std::uint32_t>::max();
  mSource.AppendVariable(MakeLinked("Nowhere", {kId, kHighest - 1}));
  AppendResults(mFrom, mInto, true);
  EXPECT_EQ(mTarget.GetVariables().back().mLink.mVariable, kHighest - 1);
}

TEST_F(AppendingResults, LinksToOtherGeometriesLeadToTheSameResults) {
  Geometry& otherTarget = AddNode<Geometry>(mInto, NodeTree::kRootId, "Other");
  Append(otherTarget, "X");
  Geometry& otherSource = AddNode<Geometry>(mFrom, NodeTree::kRootId, "Other");
  Append(otherSource, "Y|1");
  otherSource.AppendVariable(MakeLinked("Z|1", {kId, 1}));
  mSource.AppendVariable(MakeLinked("Z|1", {kId + 1, 0}));
  mSource.AppendVariable(MakeLinked("Lost|1", {kId + 1, 9}));
  mSource.EditVariable(5).mLeadsNowhere = true;
  AppendResults(mFrom, mInto, true);
  EXPECT_EQ(VariableTexts(mTarget)[9], "Z|1 -> 3,1");
  EXPECT_EQ(VariableTexts(mTarget)[10], "Lost|1 -> 3,9");
  EXPECT_THAT(VariableTexts(otherTarget), ElementsAre("X", "Y|1", "Z|1 -> 2,6"));
}

TEST_F(AppendingResults, WhereTheTargetHasAnotherNodeNothingIsAppendedAndWhereNoneItFails) {
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
