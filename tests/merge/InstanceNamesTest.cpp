#include "Qov/Ryx/InstanceNames.h"

#include <gmock/gmock.h>

#include "Qov/Util/Exception.h"
#include "merge/LinkedResults.h"
#include "support/ModelBuilder.h"

namespace QovRyx {
namespace {

using namespace Qov::Test;
using testing::ElementsAre;
using testing::Pair;

/// A tree with one geometry, which has empty results of the given names.
class InstanceNames : public testing::Test {
 protected:
  static constexpr std::uint32_t kId = 2;

  Geometry& Make(const std::vector<std::string>& names) {
    Geometry& geometry = AddNode<Geometry>(mTree, NodeTree::kRootId, "Mesh");
    for (const std::string& name : names) geometry.AppendVariable(MakeVariable(name, 12, {}));
    return geometry;
  }

  Tree mTree{false};
  PartLinksMap mLinks{{99, {}}};  // an entry of an earlier file
};

TEST_F(InstanceNames, FileNumberIsPutIntoTheInstancePart) {
  struct Row {
    const char* mName;
    std::uint64_t mFile;
    const char* mRenamed;
    const char* mAutomatic;
  };
  for (const Row& row : {Row{"Stress|LC1", 1, "Stress|F1LC1", "Stress|F1LC1"},
                         {"a|b|c", 12, "a|b|F12c", "a|b|F12c"},
                         {"Mass|", 10, "Mass|F10", "Mass|"},
                         {"Mass", 2, "Mass|F2", "Mass"},
                         {"", 3, "|F3", ""}}) {
    Tree tree(false);
    Geometry& all = AddNode<Geometry>(tree, NodeTree::kRootId, "Mesh");
    all.AppendVariable(MakeVariable(row.mName, 12, {}));
    RenameResults(tree, row.mFile, mLinks, true);
    EXPECT_THAT(VariableTexts(all), ElementsAre(row.mRenamed));
    EXPECT_THAT(mLinks, ElementsAre(Pair(kId, testing::IsEmpty())));
    all.RenameVariable(0, Barred(row.mName));
    AutoRenameInstances(tree, row.mFile, mLinks, true);
    EXPECT_THAT(VariableTexts(all), ElementsAre(row.mAutomatic));
    EXPECT_THAT(mLinks, testing::IsEmpty());
  }
}

TEST_F(InstanceNames, CommonResultsAreLinkedToEachInstance) {
  Geometry& geometry = Make({"Stress|LC1", "Stress|LC2", "Coordinates"});
  RenameResults(mTree, 2, mLinks, false);
  EXPECT_EQ(mLinks.size(), 1U);
  GenerateLinkedResults(mTree, mLinks);
  EXPECT_THAT(VariableTexts(geometry),
              ElementsAre("Stress|LC1", "Stress|LC2", "Coordinates|LC1", "Coordinates|LC2 -> 2,2"));
}

TEST_F(InstanceNames, ExistingResultsBecomeLinksInPlace) {
  Geometry& geometry = Make({"Mass|B", "Mass|A"});
  geometry.EditVariable(0).mAttributes["old"] = 1U;
  geometry.EditVariable(0).mValues = NumericArray::Of(Ramp(4, 0.0F));
  geometry.EditVariable(1).mKind = 17;
  geometry.EditVariable(1).mFlag = 3;
  geometry.EditVariable(1).TakeValueFieldsOf(MakeCarrier("", 9));
  geometry.EditVariable(1).mAttributes["new"] = 2U;
  DroppedResults dropped;
  const PartLinksMap links = {{kId, {{Barred("Mass|A"), {Barred("Mass|B"), Barred("Mass|B")}}}}};
  GenerateLinkedResults(mTree, links, dropped);
  EXPECT_EQ(dropped.mReplaced, 1U);
  EXPECT_THAT(VariableTexts(geometry), ElementsAre("Mass|B -> 2,1", "Mass|A"));
  const Geometry::VarStruct& linked = geometry.GetVariables()[0];
  EXPECT_EQ(linked.mKind, 17U);
  EXPECT_EQ(linked.mFlag, 3);
  EXPECT_EQ(linked.mKindHighByte, 5U);
  EXPECT_EQ(linked.mValue1, 9U);
  EXPECT_EQ(linked.mFlag3, 3);
  EXPECT_THAT(linked.mAttributes, ElementsAre(Pair("new", QovUtil::AttributeValue(2U))));
  EXPECT_EQ(linked.mValues.GetNumElements(), 4U);
}

TEST_F(InstanceNames, ExistingLinksToTheSameValuesAreKept) {
  Geometry& geometry = Make({"Mass|A", "Mass|C"});
  geometry.AppendVariable(MakeLinked("Mass|B", {kId, 0}));
  geometry.AppendVariable(MakeLinked("Mass", {kId, 2}));
  DroppedResults dropped;
  RenameResults(mTree, 1, mLinks, false);
  mLinks[kId] = {{Barred("Mass"), {Barred("Mass|A"), Barred("Mass|B"), Barred("Mass|C")}}};
  geometry.RenameVariable(3, "Mass");
  GenerateLinkedResults(mTree, mLinks, dropped);
  EXPECT_THAT(VariableTexts(geometry),
              ElementsAre("Mass|A", "Mass|C -> 2,2", "Mass|B -> 2,0", "Mass -> 2,2"));
  EXPECT_EQ(dropped.mReplaced, 1U);
}

/// Following each chain to its end would take minutes.
TEST_F(InstanceNames, FollowsLongChainsInLittleTime) {
  constexpr std::uint32_t kMany = 50000;
  const auto name = [](std::uint32_t i) { return "R" + std::to_string(i); };
  Geometry& geometry = Make({});
  for (std::uint32_t i = 0; i != kMany; ++i) {
    geometry.AppendVariable(MakeLinked(name(i), {kId, i + 1}));
  }
  geometry.AppendVariable(MakeCarrier(name(0) + "|LC2", 1));
  for (std::uint32_t i = 1; i != kMany; ++i) {
    geometry.AppendVariable(MakeLinked(name(i) + "|LC2", {kId, i}));
  }
  geometry.AppendVariable(MakeCarrier("S|LC1", 2));
  DroppedResults dropped;
  RenameResults(mTree, 1, mLinks, false);
  GenerateLinkedResults(mTree, mLinks, dropped);
  EXPECT_EQ(geometry.GetVariables().size(), 2 * kMany + 1);
  EXPECT_EQ(dropped.mReplaced, 0U);
  EXPECT_FALSE(geometry.GetVariables()[kMany].mLink.IsLinked());  // R0|LC1 shares its values
  for (std::uint32_t i = 1; i != kMany; ++i) {
    ASSERT_EQ(geometry.GetVariables()[kMany + i].mLink.GetPlace(), (ResultPlace{kId, i + 1}));
  }
}

TEST_F(InstanceNames, MissingResultsAreAddedLinkedOnesFirst) {
  Geometry& geometry = Make({});
  GenerateLinkedResults(mTree, {{kId, {{"Primary", {"Linked"}}}}});
  EXPECT_THAT(VariableTexts(geometry), ElementsAre("Linked -> 2,1", "Primary"));
}

TEST_F(InstanceNames, SkipsNodesThatAreNotGeometriesAndRefusesMissingOnes) {
  AddNode<Group>(mTree, NodeTree::kRootId, "Group");
  GenerateLinkedResults(mTree, {{NodeTree::kRootId, {{"P", {"L"}}}}, {2, {{"P", {"L"}}}}});
  EXPECT_THROW(GenerateLinkedResults(mTree, {{3, {}}}), Qov::Util::Exception);
}

TEST(IsMeshResult, IgnoresOneCharacterBeforeTheSeparator) {
  for (const char* name : {"Coordinates", "Coordinates |LC1", "Connectivity.|x", "Polylength",
                           "Part Elements", "Node Ids", "Element IDs"}) {
    EXPECT_TRUE(isMeshResult(Barred(name))) << name;
  }
  for (const char* name : {"Coordinates|LC1", "|Coordinates", "coordinates", "Node IDs", ""}) {
    EXPECT_FALSE(isMeshResult(Barred(name))) << name;
  }
}

}  // namespace
}  // namespace QovRyx
