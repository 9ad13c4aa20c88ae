#include "Qov/Ryx/InstanceNames.h"

#include <gmock/gmock.h>

#include "Qov/Util/Exception.h"
#include "support/ModelBuilder.h"

namespace QovRyx {
namespace {

using namespace Qov::Test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

/// One geometry with empty results of these names.
class InstanceNames : public testing::Test {
 protected:
  static constexpr std::uint32_t kId = 2;

  Geometry& Make(const std::vector<std::string>& names) {
    Geometry& geometry = AddNode<Geometry>(mTree, NodeTree::kRootId, "Mesh");
    for (const std::string& name : names) geometry.AppendVariable(MakeVariable(name, 12, {}));
    return geometry;
  }

  /// The links of the one geometry, as "primary: linked linked".
  std::vector<std::string> LinkTexts() const {
    std::vector<std::string> texts;
    for (const auto& [primary, names] : mLinks.at(kId)) {
      std::string text = Unbarred(primary) + ":";
      for (const std::string& name : names) text += " " + Unbarred(name);
      texts.push_back(text);
    }
    return texts;
  }

  Tree mTree{false};
  PartLinksMap mLinks{{99, {}}};  // what an earlier file left behind
};

TEST_F(InstanceNames, CommonResultsAreSharedAmongTheInstances) {
  Geometry& geometry = Make({"Stress|LC1", "Stress|LC2", "Coordinates"});
  RenameResults(mTree, 2, mLinks, false);
  EXPECT_EQ(mLinks.size(), 1U);
  EXPECT_THAT(LinkTexts(), ElementsAre("Coordinates|LC1: Coordinates|LC2"));
  GenerateLinkedResults(mTree, mLinks);
  EXPECT_THAT(VariableTexts(geometry),
              ElementsAre("Stress|LC1", "Stress|LC2", "Coordinates|LC1", "Coordinates|LC2 -> 2,2"));
}

TEST_F(InstanceNames, SuffixGoesBehindTheLastSeparatorOfEveryName) {
  Geometry& geometry = Make({"Stress|LC1", "a|b|c", "Mass|", "Coordinates", ""});
  RenameResults(mTree, 10, mLinks, true);
  EXPECT_THAT(VariableTexts(geometry),
              ElementsAre("Stress|F10LC1", "a|b|F10c", "Mass|F10", "Coordinates|F10", "|F10"));
  EXPECT_THAT(LinkTexts(), IsEmpty());
}

TEST_F(InstanceNames, SmallestInstancePartByBytesIsThePrimaryOne) {
  Geometry& geometry = Make({"S|LC2", "Mass|", "a|b|LC10", "T|LC2", "U|LC3"});
  RenameResults(mTree, 1, mLinks, false);
  EXPECT_THAT(VariableTexts(geometry),
              ElementsAre("S|LC2", "Mass|LC10", "a|b|LC10", "T|LC2", "U|LC3"));
  EXPECT_THAT(LinkTexts(), ElementsAre("Mass|LC10: Mass|LC2 Mass|LC3"));
}

TEST_F(InstanceNames, WithoutInstancesNamesEndInTheSeparatorAndNothingIsLinked) {
  Geometry& geometry = Make({"Stress", "Mass|"});
  RenameResults(mTree, 1, mLinks, false);
  EXPECT_THAT(VariableTexts(geometry), ElementsAre("Stress|", "Mass|"));
  EXPECT_THAT(mLinks, ElementsAre(Pair(kId, IsEmpty())));
}

TEST_F(InstanceNames, ResultsOfOneBaseNameShareOneListOfLinks) {
  Geometry& geometry = Make({"S|A", "S|B", "Mass", "Mass"});
  RenameResults(mTree, 1, mLinks, false);
  EXPECT_THAT(LinkTexts(), ElementsAre("Mass|A: Mass|B Mass|B"));
  GenerateLinkedResults(mTree, mLinks);
  EXPECT_THAT(VariableTexts(geometry),
              ElementsAre("S|A", "S|B", "Mass|A", "Mass|A", "Mass|B -> 2,2"));
}

TEST_F(InstanceNames, AutomaticRenamingTouchesOnlyNamesWithAnInstancePart) {
  Geometry& geometry = Make({"Stress|LC1", "Mass|", "Coordinates", "a|b|c"});
  AutoRenameInstances(mTree, 2, mLinks, true);
  EXPECT_THAT(VariableTexts(geometry),
              ElementsAre("Stress|F2LC1", "Mass|", "Coordinates", "a|b|F2c"));
  EXPECT_THAT(mLinks, IsEmpty());
}

TEST_F(InstanceNames, LinkedResultsAreUpdatedInPlaceAndKeepTheirArrays) {
  Geometry& geometry = Make({"Mass|B", "Mass|A"});
  geometry.EditVariable(0).mAttributes["old"] = 1U;
  geometry.EditVariable(0).mValues = NumericArray::Of(Ramp(4, 0.0F));
  geometry.EditVariable(1).mKind = 17;
  geometry.EditVariable(1).mFlag = 3;
  geometry.EditVariable(1).mAttributes["new"] = 2U;
  GenerateLinkedResults(mTree, {{kId, {{Barred("Mass|A"), {Barred("Mass|B")}}}}});
  EXPECT_THAT(VariableTexts(geometry), ElementsAre("Mass|B -> 2,1", "Mass|A"));
  const Geometry::VarStruct& linked = geometry.GetVariables()[0];
  EXPECT_EQ(linked.mKind, 17U);
  EXPECT_EQ(linked.mFlag, 3);
  EXPECT_THAT(linked.mAttributes, ElementsAre(Pair("new", QovUtil::AttributeValue(2U))));
  EXPECT_EQ(linked.mValues.GetNumElements(), 4U);
}

TEST_F(InstanceNames, LinkToALinkedPrimaryLeadsToItsTarget) {
  Geometry& geometry = Make({"Other"});
  geometry.AppendVariable(MakeLinked("Mass|A", {77, 5}));
  GenerateLinkedResults(mTree, {{kId, {{Barred("Mass|A"), {Barred("Mass|B")}}}}});
  EXPECT_THAT(VariableTexts(geometry), ElementsAre("Other", "Mass|A -> 77,5", "Mass|B -> 77,5"));
}

TEST_F(InstanceNames, MissingResultsAreMadeTheLinkedOneFirst) {
  Geometry& geometry = Make({});
  GenerateLinkedResults(mTree, {{kId, {{"Primary", {"Linked"}}}}});
  EXPECT_THAT(VariableTexts(geometry), ElementsAre("Linked -> 2,1", "Primary"));
}

TEST_F(InstanceNames, LinksOfANodeThatIsNoGeometryAreSkippedAndOfNoneRefused) {
  AddNode<Group>(mTree, NodeTree::kRootId, "Group");
  GenerateLinkedResults(mTree, {{NodeTree::kRootId, {{"P", {"L"}}}}, {2, {{"P", {"L"}}}}});
  EXPECT_THROW(GenerateLinkedResults(mTree, {{3, {}}}), Qov::Util::Exception);
}

TEST_F(InstanceNames, ThousandsOfLinksTakeNoTimeToSpeakOf) {
  std::vector<std::string> names;
  for (int i = 0; i != 20000; ++i) names.push_back("Common" + std::to_string(i));
  names.insert(names.end(), {"S|A", "S|B", "S|C"});
  Geometry& geometry = Make(names);
  RenameResults(mTree, 1, mLinks, false);
  GenerateLinkedResults(mTree, mLinks);
  EXPECT_EQ(geometry.GetVariables().size(), 60003U);
}

TEST(IsMeshResult, CutsOneCharacterBeforeTheSeparator) {
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
