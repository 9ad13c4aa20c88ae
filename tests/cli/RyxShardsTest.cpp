#include <filesystem>
#include <nlohmann/json.hpp>

#include "ryxFixture.h"
#include "support/Files.h"

namespace Qov::Test {
namespace {

namespace fs = std::filesystem;

/// Merges in parts, run without Slurm.
class RyxShards : public RyxProgram {
 protected:
  void SetUp() override {
    ASSERT_EQ(RunShell("mkdir \"it's\" && cd \"it's\" && ryx sample . && mkdir other && "
                       "ryx merge plate.ryx assembly.ryx --as datasets -o sets.ryx && "
                       "cp steps/run2.ryx steps/run9.ryx other")
                  .mStatus,
              0);
  }

  /// Runs commands in the folder of the samples, with equal dates in all histories.
  Outcome RunHere(const std::string& commands) const {
    return RunShell("cd \"it's\"; export SOURCE_DATE_EPOCH=0; " + commands);
  }
  bool Exists(const std::string& path) const { return fs::exists(mDir / ("it's/" + path)); }
};

/// RyxMerge saves in the order of the tree, whatever that of its inputs is, so that equal outputs
/// are outputs of equal models.
TEST_F(RyxShards, GiveTheModelOfOneMerge) {
  const std::string steps = "steps/run*.ryx";
  struct Case {
    const char* mNumber;
    std::string mArguments;
  };
  for (const auto& [number, arguments] : std::vector<Case>{
           {"3", "--strict " + steps},
           {"4", "--natural-order --views all other/run*.ryx plate.vpt " + steps},
           {"2", "--names number --first-number 9 --no-share --level 2 --overwrite " + steps},
           {"3",
            "--as instances --names keep plate.ryx steps/run3.ryx plate_more_load.ryx plate.ryx"},
           {"5", "--as instances --names number --views none plate.ryx steps/run1.ryx plate.ryx"},
           {"99", "plate.vpt assembly.ryx plate.ryx sets.ryx plate_more_load.ryx --views all"},
           {"2", "--join --block-size 4096 sets.ryx plate.ryx sets.ryx"},
           {"3", "--results 'Temp*' --without-instances run3 --verify " + steps},
           {"2", "--as datasets --without-nodes 7 --keep-blocks assembly.ryx plate.ryx"}}) {
    SCOPED_TRACE(arguments);
    const Outcome outcome = RunHere(
        "rm -rf jobs *one.ryx *parts.ryx; set -e; ryx merge -o one.ryx " + arguments +
        "; ryx plan --shards " + number + " --slurm jobs -- -o parts.ryx " + arguments +
        "; sh jobs/run-here -j 2; for i in one parts; do RyxMerge $i.ryx $i.ryx "
        "again_$i.ryx; done; cmp again_one.ryx again_parts.ryx; ryx diff one.ryx parts.ryx");
    EXPECT_EQ(outcome.mStatus, 0) << outcome.mOut << outcome.mErr;
    EXPECT_THAT(outcome.mOut, testing::HasSubstr("\nOK: "));
  }
}

TEST_F(RyxShards, WriteScriptsWithoutFaults) {
  if (RunHere("command -v shellcheck").mStatus != 0) GTEST_SKIP() << "shellcheck is not installed";
  const Outcome outcome = RunHere(
      "set -e; ryx plan --shards 2 --slurm jobs -- steps/run*.ryx -o \"it's all.ryx\"; "
      "shellcheck jobs/settings jobs/shard jobs/join jobs/verify jobs/submit jobs/run-here "
      "jobs/commands/*");
  EXPECT_EQ(outcome.mStatus, 0) << outcome.mOut << outcome.mErr;
}

TEST_F(RyxShards, NameFailuresAndRepeatOnlyWhatIsMissing) {
  using testing::HasSubstr;
  ASSERT_EQ(RunHere("ryx plan --shards 4 --slurm jobs -- steps/run*.ryx -o all.ryx; "
                    "mv steps/run2.ryx kept; echo damaged >steps/run2.ryx")
                .mStatus,
            0);
  const Outcome failed = RunHere("touch jobs/parts/.3.ryx.killed; sh jobs/run-here");
  EXPECT_EQ(failed.mStatus, 2);
  EXPECT_THAT(failed.mErr, HasSubstr("shard 2 of 4 FAILED with status 2"));
  EXPECT_THAT(failed.mErr, HasSubstr("FAILED shards: 2\n"));
  EXPECT_EQ(RunHere("ls -A jobs/parts").mOut, "1.ryx\n3.ryx\n4.ryx\n");
  EXPECT_FALSE(Exists("all.ryx"));
  EXPECT_THAT(RunHere("sh jobs/join").mErr, HasSubstr("these shards are missing: 2\n"));

  EXPECT_EQ(RunHere("mv kept steps/run2.ryx; sh jobs/run-here 2").mStatus, 0);
  EXPECT_FALSE(Exists("all.ryx"));
  EXPECT_THAT(RunHere("sh jobs/run-here 2").mOut, HasSubstr("shard 2 of 4: complete"));
  EXPECT_EQ(RunHere("sh jobs/run-here").mStatus, 0);
  EXPECT_THAT(RunHere("sh jobs/run-here").mOut, HasSubstr("join: complete, not repeated"));

  const Outcome changed = RunHere("cp steps/run3.ryx steps/run12.ryx; sh jobs/verify");
  EXPECT_EQ(changed.mStatus, 1);
  EXPECT_THAT(changed.mErr, HasSubstr("do not use all.ryx"));
}

TEST_F(RyxShards, RefuseWhatCannotBeDivided) {
  const std::string two = "steps/run1.ryx steps/run2.ryx";
  for (const auto& [command, text] : std::vector<std::pair<std::string, std::string>>{
           {"plan --shards 2 --slurm new -- plate.ryx plate.vpt -o x", "only one model"},
           {"plan --shards 2 --slurm new -- plate.vpt plate.vpt -o x", "name at least one model"},
           {"plan --shards 0 --slurm new -- -o x " + two, "at least one shard"},
           {"plan --shards 2 --slurm steps -- -o x " + two, "is not an empty folder"},
           {"plan --shards 2 --slurm no/where -- -o x " + two, "cannot make the folder"},
           {"plan --shards 2 --slurm new -- --frm list -o x " + two, "after \"--\""},
           {"plan --shards 2 --slurm new -- " + two, "--output is required"},
           {"plan --shards 2 --slurm new --as auto -- -o x " + two, "stand after \"--\""},
           {"plan --shards 2 --slurm new -- --from /dev/null -o x", "lists no paths"},
           {"plan --shards 2 -- -o x " + two, "--shards requires --slurm"},
           {"merge --join-parts --as instances -o x " + two, "is not a part of a merge"},
           {"merge --part-of plate.ryx --as instances --names keep plate.ryx -o p1 && "
            "ryx merge --part-of assembly.ryx --as instances --names keep assembly.ryx -o p2 && "
            "ryx merge --join-parts --as instances p1 p2 -o x",
            "belongs to another merge"},
           {"merge --part-of plate.ryx -o x " + two, "needs a mode"},
           {"merge --part-of plate.ryx --as datasets --verify -o x " + two, "leave out --verify"},
           {"merge --names stem --as instances --stems plate.vpt -o x " + two, "a zero byte"}}) {
    SCOPED_TRACE(command);
    const Outcome outcome = RunHere("ryx " + command);
    EXPECT_EQ(outcome.mStatus, 2);
    EXPECT_THAT(outcome.mErr, testing::HasSubstr(text));
  }
  const Outcome impossible = RunHere("ryx plan --shards 2 --slurm new -- -o plate.ryx " + two);
  EXPECT_EQ(impossible.mStatus, 1);
  EXPECT_THAT(impossible.mOut, testing::HasSubstr("No scripts were written"));
  EXPECT_FALSE(Exists("new"));
  const Outcome json = RunHere("ryx plan --json --shards 2 --slurm new -- -o x " + two);
  EXPECT_EQ(ParseJson(json, "plan")["shards"]["list"].size(), 2U);
}

}  // namespace
}  // namespace Qov::Test
