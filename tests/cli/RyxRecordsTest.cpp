#include "LedgerFixture.h"
#include "Qov/Ryx/Sequencer.h"
#include "check/FileCheck.h"
#include "ledger/ExpectModel.h"
#include "ledger/VerifyOutput.h"
#include "model/StreamNames.h"
#include "support/Files.h"
#include "support/Streams.h"

/// Files with data that only newer programs know, and with data that readers leave out.
namespace Qov::Test {
namespace {

using namespace QovRyx;
using testing::HasSubstr;

class RyxRecords : public LedgerTest {
 protected:
  std::string SaveKept(const std::string& name) const {
    return SaveModel(name, [](Tree& tree) {
      BuildPlate(tree, {"Stress|LC1"}, 0);
      AddViewPointPath(tree, "walk", 1);
      tree.GetViewPoint().mViewState.mMiscState.SetOrigin("0.9", "more");
      tree.GetViewPointPaths()[0].mViewPoints[0].SetOrigin(ViewPoint::kTag, "?");
      Content<Shape>(tree, PlateIds::kShape).mMaterial.mValues.SetOrigin("0.4", "gloss");
      auto action = std::make_unique<UnknownAction>(std::uint16_t{7});
      action->SetOrigin("2.0", "fly");
      tree.GetSequencerData().mActions.mSlots.push_back(std::move(action));
    });
  }
  std::string SavePlain(const std::string& name) const {
    return SaveModel(name, [](Tree& tree) {
      BuildPlate(tree, {"Stress|LC1"}, 1);
      AddViewPointPath(tree, "walk", 1);
    });
  }

  /// Saves a plain model with two equal keys and a zero byte in its attributes and its views.
  std::string SaveWithLosses(const std::string& name, char dropped) const {
    const std::string path = SaveModel(name, [dropped](Tree& tree) {
      BuildPlate(tree, {"Stress|LC1"}, 1);
      Content<Group>(tree, PlateIds::kGroup).mAttributes = {{"key1", 1.0}, {"key2", 2.0}};
      auto& hidden = tree.GetViewPoint().mViewState.mHiddenState.mHiddenEntities;
      hidden = {{"key1", 1}, {"key2", 2}};
      tree.GetViewPoint().mName = std::string("seen-") + dropped;
      AddViewPointPath(tree, "walk", 1);
    });
    Streams streams = ReadStreams(path);
    for (const std::string& stream : {kAttributes, kViewPoints}) {
      std::string& bytes = streams[stream];
      bytes[bytes.find("key2") + 3] = '1';
      if (stream == kViewPoints) bytes[bytes.find("seen-") + 4] = '\0';
    }
    WriteStreams(path, streams);
    return path;
  }

  static std::string FindingsOf(const std::string& path) {
    Tools::FileReport report(100);
    Tools::CheckFile(path, report);
    std::string text;
    for (const Tools::Finding& finding : report.mFindings.GetKept()) {
      text += finding.mCode + " " + finding.mPlace.mPart + ": " + finding.mText + "\n";
    }
    return text;
  }

  /// Returns the number of faults of the output after `plant` has changed the output.
  std::uint64_t CountFaults(const Strings& inputs, void (*plant)(Tree& output)) {
    const Tools::MergeRequest request = Tools::MakeMergeRequest({}, inputs, mOutput);
    const auto read = Tools::LoadInputs(request);
    std::vector<Tools::Obstacle> obstacles;
    Tools::ExpectedModel model = Tools::ExpectModel(request.mMode, read, obstacles);
    Tree output(false);
    LoadTree(output, mOutput);
    plant(output);
    Tools::Faults faults(100);
    Tools::VerifyOutput(model, read, output, faults);
    return faults.GetCount();
  }
};

TEST_F(RyxRecords, UnknownTagsBytesAndActionsAreKeptAndShown) {
  const std::string kept = SaveKept("kept.ryx");
  const std::string plain = SavePlain("plain.ryx");
  const std::string findings = FindingsOf(kept);
  for (const char* finding :
       {"record-tag current view: viewState.miscState: Tag \"0.9\" is unknown",
        "record-rest current view: viewState.miscState: 4 bytes follow the last known field",
        "record-rest path \"walk\", view 0: 1 byte follows the last field",
        "record-tag material: Tag \"0.4\"",
        "action-type sequencer: actions[0]: The action has the unknown type 7; its "
        "tag \"2.0\" and 3 bytes are kept"}) {
    EXPECT_THAT(findings, HasSubstr(finding));
  }
  EXPECT_THAT(Run({"dump", kept, "--view-point", "0"}).mOut, HasSubstr("    tail: \"6D6F7265\""));
  EXPECT_THAT(Run({"dump", kept, "--sequencer"}).mOut,
              HasSubstr("    type: 7\n    tag: \"2.0\"\n    tail: \"666C79\""));
  const Outcome diff = Run({"diff", kept, plain});
  EXPECT_EQ(diff.mStatus, 1);
  for (const char* field : {"miscState.tag", "miscState.tail", "tag, tail", "actions"}) {
    EXPECT_THAT(diff.mOut, HasSubstr(field));
  }

  const Strings inputs{kept, plain};
  ASSERT_EQ(Merge({}, inputs), 0);
  EXPECT_EQ(Verify({}, inputs).mStatus, 0);
  EXPECT_EQ(CountFaults(inputs, [](Tree&) {}), 0U);
  using Plant = void (*)(Tree&);
  for (const Plant plant : std::initializer_list<Plant>{
           [](Tree& t) { t.GetViewPoint().mViewState.mMiscState.ForgetOrigin(); },
           [](Tree& t) { t.GetViewPoint().mViewState.mMiscState.SetOrigin("0.9", "mory"); },
           [](Tree& t) { t.GetViewPoint().mViewState.mMiscState.SetOrigin("0.8", "more"); },
           [](Tree& t) { t.GetViewPointPaths()[0].mViewPoints[0].ForgetOrigin(); },
           [](Tree& t) {
             for (auto& [id, entry] : t.GetNodes()) {
               auto* shape = dynamic_cast<Shape*>(entry.mData.get());
               if (shape != nullptr) shape->mMaterial.mValues.ForgetOrigin();
             }
           },
           [](Tree& t) { t.GetSequencerData().mActions.mSlots[0].reset(); },
           [](Tree& t) { t.GetSequencerData().mActions.mSlots[0]->SetOrigin("2.0", "fl"); }}) {
    EXPECT_GT(CountFaults(inputs, plant), 0U);
  }
}

TEST_F(RyxRecords, EqualKeysAndCutTextsAreReportedByEveryTool) {
  const std::string lossy = SaveWithLosses("lossy.ryx", 'a');
  const std::string other = SaveWithLosses("other.ryx", 'b');
  const std::string plain = SavePlain("plain.ryx");
  const std::string findings = FindingsOf(lossy);
  for (const char* code : {"attribute-name", "record-key", "zero-byte"}) {
    EXPECT_THAT(findings, HasSubstr(code));
  }
  const Outcome diff = Run({"diff", lossy, other});
  EXPECT_EQ(diff.mStatus, 1);
  EXPECT_THAT(diff.mOut, HasSubstr("views: readers leave out 1 map entry with the key of an "
                                   "earlier one and 1 text after a zero byte in A"));
  EXPECT_EQ(Run({"diff", lossy, lossy}).mStatus, 0);
  const Strings inputs{lossy, plain};
  ASSERT_EQ(Merge({}, inputs), 0);
  const Outcome verdict = Verify({}, inputs);
  EXPECT_THAT(verdict.mOut, HasSubstr("unread-content"));
  // Views of further models are left out, so their losses are not counted.
  ASSERT_EQ(Merge({}, {plain, other}), 0);
  const Outcome furtherViews = Verify({}, {plain, other});
  EXPECT_THAT(furtherViews.mOut, testing::Not(HasSubstr("text after a zero byte")));
}

TEST_F(RyxRecords, ProbeRecordsOfLegacyBuildsAreReportedBeforeAndAfterAMerge) {
  Tree tree("viewer", "2010 R1 4,1,311,130", false);
  BuildPlate(tree, {"Stress|LC1"}, 0);
  AddViewPointPath(tree, "walk", 1);
  const std::string legacy = mDir / "legacy.ryx";
  SaveTree(tree, legacy);
  const std::string plain = SavePlain("plain.ryx");
  EXPECT_THAT(FindingsOf(legacy), HasSubstr("legacy-probes entry 0: The views were written by the "
                                            "build \"2010 R1 4,1,311,130\""));
  EXPECT_THAT(FindingsOf(legacy), HasSubstr("A merge keeps them"));
  EXPECT_THAT(FindingsOf(plain), testing::Not(HasSubstr("legacy")));
  for (const Strings& options : kMergeKinds) {
    ASSERT_EQ(Merge(options, {legacy, plain}), 0);
    EXPECT_THAT(FindingsOf(mOutput), HasSubstr("is that of a merge"));
  }
  const Strings divide{"plan", "--shards", "2", "--slurm", mDir / "jobs"};
  const Strings inputs{"--", legacy, plain, "-o", mDir / "new.ryx"};
  EXPECT_THAT(Run(Joined(divide, inputs)).mErr, HasSubstr("because an old program wrote them"));
  EXPECT_EQ(Run(Joined(divide, Joined(inputs, {"--views", "none"}))).mStatus, 0);
}

}  // namespace
}  // namespace Qov::Test
