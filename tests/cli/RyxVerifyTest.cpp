#include <algorithm>

#include "LedgerFixture.h"
#include "StreamDamage.h"
#include "ledger/ExpectModel.h"
#include "ledger/VerifyOutput.h"
#include "support/Files.h"
#include "support/Streams.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;

const Strings kAsInstances = {"--merge-as-instances"};

/// Two files with one mesh. Merged as instances they have the results
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

  struct Fault {
    const char* mName;
    void (*mPlant)(Tree& output);
  };

  /// Returns the faults of an output that was changed after it was loaded.
  std::string Find(const Strings& options, const Fault& fault) {
    EXPECT_EQ(Merge(options, mInputs), 0);
    const MergeOptions flags{.mAsInstances = !options.empty()};
    const Tools::MergeRequest request = Tools::MakeMergeRequest(flags, mInputs, mOutput);
    const auto inputs = Tools::LoadInputs(request);
    std::vector<Tools::Obstacle> obstacles;
    Tools::ExpectedModel model = Tools::ExpectModel(request.mMode, inputs, obstacles);
    Tree output(false);
    LoadTree(output, mOutput);
    fault.mPlant(output);
    Tools::Faults faults(100);
    Tools::VerifyOutput(model, inputs, output, faults);
    std::string text = std::string(fault.mName) + "\n";
    for (const Tools::Fault& found : faults.GetFirst()) {
      text += "  node " + std::to_string(found.mNode) + ", " + Unbarred(found.mSubject) + ": " +
              found.mText + "\n";
    }
    return text;
  }

  static void ChangeValue(Geometry::VarStruct& result, std::size_t i, std::uint32_t bits) {
    std::vector<std::uint32_t> values;
    result.mValues.GetValues(values);
    values[i] = bits;
    result.mValues = NumericArray::Of(values, result.mValues.GetWidth());
  }

  Strings mInputs;
};

TEST_F(RyxVerify, FindsEachFault) {
  const std::vector<Fault> ofInstances = {
      {"none", [](Tree&) {}},
      {"a value", [](Tree& t) { ChangeValue(Result(t, 9), 17, 0); }},
      {"a value that is not a number", [](Tree& t) { ChangeValue(Result(t, 0), 119, 0x7FC00001); }},
      {"an integer", [](Tree& t) { ChangeValue(Result(t, 8), 0, 77); }},
      {"the shape of an array",
       [](Tree& t) { Result(t, 3).mValues = NumericArray::Of(Ramp(39, 0), 3); }},
      {"a name", [](Tree& t) { Mesh(t).RenameVariable(11, "Other"); }},
      {"the order", [](Tree& t) { std::swap(Result(t, 2), Result(t, 3)); }},
      {"results of two files", [](Tree& t) { std::swap(Result(t, 2), Result(t, 9)); }},
      {"an additional result", [](Tree& t) { Mesh(t).AppendVariable(Mesh(t).GetVariables()[11]); }},
      {"a link to another result",
       [](Tree& t) {
         Result(t, 6).mLink = ResultLink({PlateIds::kGeometry, 7});
       }},
      {"a link to no node",
       [](Tree& t) {
         Result(t, 6).mLink = ResultLink({99, 0});
       }},
      {"a link to itself",
       [](Tree& t) {
         Result(t, 6).mLink = ResultLink({PlateIds::kGeometry, 6});
       }},
      {"no link", [](Tree& t) { Result(t, 6).mLink = {}; }},
      {"descriptors",
       [](Tree& t) {
         Result(t, 2).mAttributes["load"] = 1.0;  // a double instead of a float
         Result(t, 3).mKindHighByte = 5;
         Result(t, 4).mFlag = 1;
         Result(t, 9).mValue2 = 1;
       }},
      {"a group",
       [](Tree& t) {
         Content<Group>(t, PlateIds::kGroup).mTranslation[0] = -0.0F;
         Content<Group>(t, PlateIds::kGroup).mAttributes.erase("mass");
       }},
      {"a material",
       [](Tree& t) {
         auto& material = Content<Shape>(t, PlateIds::kShape).mMaterial;
         material.mValues.mColour3.mB = -0.0F;
       }},
      {"node sets",
       [](Tree& t) {
         auto& sets = Content<NodeSets>(t, PlateIds::kSets);
         sets.SetSets({{"left", {1, 2, 3, 0, 5}}, {"some", {}}, {"right", {21, 22, 23}}});
       }},
      {"views",
       [](Tree& t) {
         t.GetViewPoint().mMatrix[3] = 0x7FC00001;
         t.GetSequencerData().mName = "other";
         t.GetViewPointPaths()[0].mViewPoints[1].mFlag = 7;
         t.GetViewPointPaths().push_back({"more", {}});
       }},
      {"no views", [](Tree& t) { t.SetHasViewPoints(false); }},
  };
  const std::vector<Fault> ofDatasets = {
      {"none", [](Tree&) {}},
      {"a last child", [](Tree& t) { t.GetNodes().GetReqNode(3).mLastChild = 4; }},
      {"a geometry without results",
       [](Tree& t) {
         t.GetNodes().GetReqNode(PlateIds::kGeometry + 1).mData =
             std::make_unique<Geometry>("Skin");
       }},
      {"nodes",
       [](Tree& t) {
         auto& nodes = t.GetNodes();
         nodes.GetReqNode(3).mNextSibling = 9;
         nodes.GetReqNode(4).mData = std::make_unique<Group>("Skin");
         nodes.GetReqNode(8).mData = std::make_unique<Group>("Plates");
         AddNode<Group>(t, 1, "New");
         nodes.GetReqNode(1).mLastChild = 7;
         nodes.GetReqNode(7).mNextSibling = 0;
       }},
  };
  std::string found;
  for (const Fault& fault : ofInstances) found += Find(kAsInstances, fault);
  for (const Fault& fault : ofDatasets) found += Find({}, fault);
  ExpectGolden("verify_faults.txt", found);
}

/// Damages bytes of an output; most of the faults are not visible in a loaded model.
TEST_F(RyxVerify, FindsDataThatProgramsDropOnLoading) {
  Strings inputs;
  for (const std::uint32_t seed : {1U, 2U}) {
    inputs.push_back(SaveModel("in" + std::to_string(seed) + ".ryx", [seed](Tree& tree) {
      BuildPlate(tree, {"Heat|LC1", "Stress|LC1"}, seed);
      Mesh(tree).AppendVariable(MakeLinked("Lost|LC1", {99, 3}));
      AddNode<FutureNode>(tree, PlateIds::kGroup, "Clip");
      AddViewPointPath(tree, "walk", 1);
    }));
  }
  ASSERT_EQ(Merge(kAsInstances, inputs), 0);
  ASSERT_EQ(Verify(kAsInstances, inputs).mStatus, 0);
  const Streams sound = ReadStreams(mOutput);
  ExpectAfterEachLine("verify_planted.txt", [&](const std::string& damages) {
    SCOPED_TRACE(damages);
    Streams streams = sound;
    DamageStreams(streams, damages);
    WriteStreams(mOutput, streams);
    const Outcome outcome = Verify(Joined(kAsInstances, {"--limit", "4"}), inputs);
    EXPECT_EQ(outcome.mStatus, 1) << outcome.mErr;
    const std::size_t verdict = std::min(outcome.mOut.find("Not OK: "), outcome.mOut.size());
    return outcome.mOut.substr(verdict, outcome.mOut.find("\n\n", verdict) + 1 - verdict);
  });
}

TEST_F(RyxVerify, PrintsTheLedgerAndTheFirstDifferences) {
  ASSERT_EQ(Merge(kAsInstances, mInputs), 0);
  Streams streams = ReadStreams(mOutput);
  for (const std::size_t i : {0U, 300U, 600U}) {
    streams["Heavy Data"][i] = static_cast<char>(streams["Heavy Data"][i] ^ 1);
  }
  WriteStreams(mDir / "damaged.ryx", streams);
  std::string cut = ReadFile(mOutput);
  cut[2900] = static_cast<char>(~cut[2900]);  // in the heavy data
  WriteFile(mDir / "cut.ryx", cut);
  Streams input = ReadStreams(mInputs[0]);
  input["Heavy Data"][input["Heavy Data"].size() - 40] = 9;  // end of the last set
  WriteStreams(mDir / "sets.ryx", input);
  ExpectTranscript("verify.txt");
}

}  // namespace
}  // namespace Qov::Test
