#include "LedgerFixture.h"
#include "support/Streams.h"

namespace Qov::Test {
namespace {

using QovRyx::Geometry;
using QovRyx::Group;
using QovRyx::NodeSets;
using QovRyx::NumericArray;
using QovRyx::Tree;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const Strings kAsInstances = {"--merge-as-instances"};

/// Two files over one mesh. Merged as instances its results are
///   0 Coordinates|LC1   1 Connectivity|LC1   2 Heat|LC1   3 Heat|LC2   4 Stress|LC1
///   5 Connectivity|LC2 -> 1   6 Coordinates|LC2 -> 0, and 7 to 11 like the first five.
class RyxVerify : public LedgerTest {
 protected:
  RyxVerify() {
    for (const std::uint32_t seed : {1U, 2U}) {
      const std::string name = "run" + std::to_string(seed) + ".ryx";
      mInputs.push_back(SaveModel(name, [seed](Tree& tree) {
        BuildPlate(tree, {"Heat|LC1", "Heat|LC2", "Stress|LC1"}, seed);
        AddViewPointPath(tree, "walk", 2);
      }));
    }
  }

  /// What a recount finds in an output that was changed after it was read.
  template <class Damage>
  Strings Find(const Strings& options, Damage damage) {
    EXPECT_EQ(Merge(options, mInputs), 0);
    const Tools::MergeOptions flags{.mAsInstances = !options.empty()};
    const Tools::MergeRequest request = Tools::MakeMergeRequest(flags, mInputs, mOutput);
    const auto inputs = Tools::LoadInputs(request, {});
    std::vector<Tools::Obstacle> obstacles;
    Tools::ExpectedModel model = Tools::ExpectModel(request.mMode, inputs, obstacles);
    Tree output(false);
    LoadTree(output, mOutput);
    damage(output);
    Tools::Differences differences(100);
    Tools::Recount(model, inputs, output, differences).Run();
    Strings texts;
    for (const Tools::Difference& difference : differences.GetFirst()) {
      texts.push_back(Unbarred(difference.mSubject) + ": " + difference.mText);
    }
    return texts;
  }
  /// The same for the results of merged instances.
  template <class Damage>
  Strings FindInResults(Damage damage) {
    return Find(kAsInstances, [&](Tree& output) { damage(Mesh(output)); });
  }
  /// The same for a node of merged instances.
  template <class T, class Damage>
  Strings FindInNode(std::uint32_t id, Damage damage) {
    return Find(kAsInstances, [&](Tree& output) {
      damage(dynamic_cast<T&>(*output.GetNodes().GetReqNode(id).mData));
    });
  }

  static Geometry& Mesh(Tree& tree) {
    return *QovRyx::AsGeometry(tree.GetNodes().GetReqNode(PlateIds::kGeometry));
  }
  static void ChangeValue(Geometry::VarStruct& result, std::size_t i, std::uint32_t bits) {
    std::vector<std::uint32_t> values;
    result.mValues.GetValues(values);
    values[i] = bits;
    result.mValues = NumericArray::Of(values, result.mValues.GetWidth());
  }
  static void Swap(Geometry& mesh, std::size_t i, std::size_t k) {
    std::swap(mesh.EditVariable(i), mesh.EditVariable(k));
  }

  Strings mInputs;
};

TEST_F(RyxVerify, FindsNothingInASoundOutput) {
  EXPECT_THAT(Find({}, [](Tree&) {}), IsEmpty());
  EXPECT_THAT(Find(kAsInstances, [](Tree&) {}), IsEmpty());
}

TEST_F(RyxVerify, FindsASingleValue) {
  EXPECT_THAT(FindInResults([](Geometry& mesh) { ChangeValue(mesh.EditVariable(9), 17, 0); }),
              ElementsAre("Heat|LC1: 1 of 40 values differ; number 17 is 0, should be 110.5"));
  EXPECT_THAT(
      FindInResults([](Geometry& mesh) { ChangeValue(mesh.EditVariable(0), 119, 0x7FC00001); }),
      ElementsAre(AllOf(HasSubstr("Coordinates|LC1: 1 of 120"), HasSubstr("7fc00001"))));
  EXPECT_THAT(FindInResults([](Geometry& mesh) { ChangeValue(mesh.EditVariable(8), 0, 77); }),
              ElementsAre("Connectivity|LC1: 1 of 40 values differ; number 0 is 77, should be 2"));
  EXPECT_THAT(FindInResults([](Geometry& mesh) {
                mesh.EditVariable(3).mValues = NumericArray::Of(Ramp(39, 0), 3);
              }),
              ElementsAre("Heat|LC2: has items of another width",
                          "Heat|LC2: has 39 values, should have 40"));
}

TEST_F(RyxVerify, FindsResultsThatAreMissingSwappedOrTooMany) {
  EXPECT_THAT(FindInResults([](Geometry& mesh) { mesh.RenameVariable(11, "Other"); }),
              ElementsAre("Stress|LC1: is missing", "Other: is a result too many"));
  EXPECT_THAT(FindInResults([](Geometry& mesh) { Swap(mesh, 2, 3); }),
              ElementsAre("Heat|LC2: stands in another place"));
  EXPECT_THAT(FindInResults([](Geometry& mesh) { Swap(mesh, 2, 9); }),
              ElementsAre("Heat|LC1: has other attributes", "Heat|LC1: has other attributes",
                          HasSubstr("Heat|LC1: 40 of 40"), HasSubstr("Heat|LC1: 40 of 40")));
  EXPECT_THAT(FindInResults([](Geometry& mesh) { mesh.AppendVariable(mesh.GetVariables()[11]); }),
              ElementsAre("Stress|LC1: is a result too many"));
  EXPECT_THAT(Find({},
                   [](Tree& output) {
                     auto& entry = output.GetNodes().GetReqNode(PlateIds::kGeometry + 1);
                     entry.mData = std::make_unique<Geometry>("Skin");
                   })
                  .size(),
              5U);
}

TEST_F(RyxVerify, FindsAWrongLink) {
  const auto relink = [this](QovRyx::Geometry::Link link) {
    return FindInResults([link](Geometry& mesh) { mesh.EditVariable(6).mLink = link; });
  };
  EXPECT_THAT(relink({PlateIds::kGeometry, 7}),
              ElementsAre("Coordinates|LC2: is linked to another result"));
  EXPECT_THAT(relink({99, 0}), ElementsAre("Coordinates|LC2: is linked to nothing"));
  EXPECT_THAT(relink({PlateIds::kGeometry, 6}),
              ElementsAre("Coordinates|LC2: is linked to nothing"));
  EXPECT_THAT(FindInResults([](Geometry& mesh) { mesh.EditVariable(6).mLinked = false; }),
              ElementsAre("Coordinates|LC2: is not linked"));
}

TEST_F(RyxVerify, FindsChangedDescriptors) {
  EXPECT_THAT(FindInResults([](Geometry& mesh) {
                mesh.EditVariable(2).mAttributes["load"] = 1.0;  // a double, no float
                mesh.EditVariable(3).mKindHighByte = 5;
                mesh.EditVariable(4).mFlag = 1;
                mesh.EditVariable(9).mValue2 = 1;
              }),
              ElementsAre("Heat|LC1: has other attributes", "Heat|LC2: has another kind",
                          "Stress|LC1: has another flag", "Heat|LC1: has other flags"));
}

TEST_F(RyxVerify, FindsChangedNodes) {
  EXPECT_THAT(FindInNode<Group>(PlateIds::kGroup,
                                [](Group& group) {
                                  group.mTranslation[0] = -0.0F;
                                  group.mAttributes.erase("mass");
                                }),
              ElementsAre(": has another placement", ": has other attributes"));
  EXPECT_THAT(FindInNode<QovRyx::Shape>(
                  PlateIds::kShape,
                  [](QovRyx::Shape& shape) { shape.mMaterial.mValues.mColour3.mB = -0.0F; }),
              ElementsAre(": has another material"));
  EXPECT_THAT(FindInNode<NodeSets>(PlateIds::kSets,
                                   [](NodeSets& sets) {
                                     auto list = sets.GetSets();
                                     list[0].mValues[3] = 0;
                                     list[1].mName = "some";
                                     sets.SetSets(list);
                                   }),
              ElementsAre("left: has other members", "none: has another name"));
  EXPECT_THAT(Find({},
                   [](Tree& output) {
                     auto& nodes = output.GetNodes();
                     nodes.GetReqNode(3).mNextSibling = 9;
                     nodes.GetReqNode(4).mData = std::make_unique<Group>("Skin");
                     nodes.GetReqNode(8).mData = std::make_unique<Group>("Plates");
                     AddNode<Group>(output, 1, "New");
                     nodes.GetReqNode(1).mLastChild = 7;
                     nodes.GetReqNode(7).mNextSibling = 0;
                   }),
              ElementsAre(": stands elsewhere in the tree", ": is a node of another type",
                          ": has another name", ": has other attributes", ": is a node too many"));
}

TEST_F(RyxVerify, FindsChangedViews) {
  const Strings found = Find(kAsInstances, [](Tree& output) {
    output.GetViewPoint().mMatrix[3] = 0x7FC00001;
    output.GetSequencerData().mName = "other";
    output.GetViewPointPaths()[0].mViewPoints[1].mFlag = 7;
    output.GetViewPointPaths().push_back({"more", {}});
  });
  EXPECT_THAT(found, ElementsAre("no name: the current view is another one",
                                 ": the sequencer is another one", "walk: the path has other views",
                                 ": the output has 1 paths too many"));
  EXPECT_EQ(Find(kAsInstances, [](Tree& output) { output.SetHasViewPoints(false); }).size(), 2U);
}

TEST_F(RyxVerify, PrintsTheLedgerAndTheFirstDifferences) {
  ASSERT_EQ(Merge(kAsInstances, mInputs), 0);
  const Outcome sound = Verify(kAsInstances, mInputs);
  EXPECT_EQ(sound.mStatus, 0) << sound.mErr;
  ExpectGolden("verify_sound.txt", sound.mOut);

  Streams streams = ReadStreams(mOutput);
  for (const std::size_t i : {0U, 300U, 600U}) {
    streams["Heavy Data"][i] = static_cast<char>(streams["Heavy Data"][i] ^ 1);
  }
  WriteStreams(mOutput, streams);
  const Outcome damaged = Verify({"--merge-as-instances", "--limit", "2"}, mInputs);
  EXPECT_EQ(damaged.mStatus, 1);
  ExpectGolden("verify_damaged.txt", damaged.mOut);
  const Tools::Json document =
      ParseJson(Verify({"--merge-as-instances", "--json"}, mInputs), "verify");
  EXPECT_EQ(document["addsUp"], false);
  EXPECT_EQ(document["differences"]["count"], 3);
  EXPECT_EQ(document["differences"]["first"][2]["node"], PlateIds::kGeometry);
}

TEST_F(RyxVerify, TellsOtherMergesApart) {
  ASSERT_EQ(Merge(kAsInstances, mInputs), 0);
  EXPECT_EQ(Verify({}, mInputs).mStatus, 1);
  EXPECT_EQ(Verify({"--merge-as-instances", "--suffix-file-instance"}, mInputs).mStatus, 1);
  EXPECT_EQ(Verify(kAsInstances, {mInputs[1], mInputs[0]}).mStatus, 1);
  EXPECT_EQ(Verify(kAsInstances, {mInputs[0], mInputs[0]}).mStatus, 1);
  EXPECT_EQ(Verify(kAsInstances, Joined(mInputs, {mInputs[1]})).mStatus, 1);
}

TEST_F(RyxVerify, SaysWhatCannotBeCompared) {
  const Outcome nothing = Verify(kAsInstances, mInputs);
  EXPECT_EQ(nothing.mStatus, 2);
  EXPECT_THAT(nothing.mErr, HasSubstr("Unable to open file"));
  ASSERT_EQ(Merge(kAsInstances, mInputs), 0);
  const Outcome noInput = Verify(kAsInstances, {mInputs[0], mDir / "none.ryx"});
  EXPECT_EQ(noInput.mStatus, 2);
  EXPECT_THAT(noInput.mErr, HasSubstr("none.ryx"));
  const Outcome same = Verify({"--json"}, {mInputs[0], mDir / "none.ryx"});
  EXPECT_EQ(ParseJson(same, "verify")["trouble"].size(), 1U);
  std::string bytes = ReadFile(mOutput);
  constexpr std::size_t kInHeavyData = 2900;
  bytes[kInHeavyData] = static_cast<char>(~bytes[kInHeavyData]);
  WriteFile(mOutput, bytes);
  const Outcome broken = Verify(kAsInstances, mInputs);
  EXPECT_EQ(broken.mStatus, 1);
  EXPECT_THAT(broken.mOut, HasSubstr("cannot be read: "));
}

}  // namespace
}  // namespace Qov::Test
