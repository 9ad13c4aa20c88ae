#include "RyxMergeFixture.h"

namespace {

using namespace Qov::Test;
using testing::HasSubstr;
using testing::StartsWith;

TEST_F(RyxMergeProgram, TellsItsUsageBeforeItTouchesAnything) {
  const std::vector<std::vector<std::string>> calls = {
      {},
      {"a.ryx", "out.ryx"},
      {"--merge-as-instances", "--", "a.ryx", "out.ryx", "--arrange-files"}};
  for (const auto& arguments : calls) {
    const Outcome outcome = Run(arguments);
    EXPECT_EQ(outcome.mStatus, 1);
    EXPECT_EQ(outcome.mErr, "Usage: " RYXMERGE_PROGRAM " <files_to_merge> <output_file>\n");
    EXPECT_EQ(outcome.mOut, "");
    EXPECT_FALSE(Exists(mLog));
  }
}

TEST_F(RyxMergeProgram, NeedsAModel) {
  const Outcome outcome = Run({"a.vpt", ".vpt", "out.ryx"});
  EXPECT_EQ(outcome.mStatus, 4);
  EXPECT_EQ(outcome.mErr, mLogMessage + "No Ryx files found. \n");
}

TEST_F(RyxMergeProgram, TakesViewPointFilesByTheirExactEnding) {
  for (const char* model : {"a.VPT", "vpt", "a.vpt.ryx"}) {
    const Outcome outcome = Run({"a.vpt", mDir / model, mOutput});
    EXPECT_EQ(outcome.mStatus, 2) << model;
    EXPECT_THAT(outcome.mErr, HasSubstr("Unable to open file \"" + mDir / model + "\""));
  }
}

TEST_F(RyxMergeProgram, RunsWithoutALogWhereNoneCanBe) {
  for (const std::string& place : {mDir / "missing", Plate("file")}) {
    mSurroundings.mEnvironment["PELORIN_TEMP_PATH"] = place;
    const Outcome outcome = Run({Plate("a.ryx"), Plate("b.ryx"), mOutput});
    EXPECT_EQ(outcome.mStatus, 0);
    EXPECT_EQ(outcome.mErr, "Unable to set log file.Log information will be discorded.\n");
  }
}

TEST_F(RyxMergeProgram, LogsOneLineARecord) {
  mSurroundings.mEnvironment["PELORIN_TEMP_PATH"] = mDir / "";
  WriteFile(mLog, "from an earlier run");
  const Outcome outcome = Run({Plate("a.ryx"), Plate("b.ryx"), mOutput});
  EXPECT_THAT(outcome.mErr,
              StartsWith("Writing log to \"" + mDir / "" + "/RyxMerge_trace.log\"\n"));
  std::istringstream log(ReadFile(mLog));
  std::vector<std::string> lines;
  for (std::string line; std::getline(log, line);) lines.push_back(line);
  EXPECT_THAT(lines, testing::Each(testing::MatchesRegex("[A-Za-z]+ : [0-9]+ @ .*")));
  EXPECT_THAT(lines, testing::Contains(
                         testing::MatchesRegex("Index : [0-9]+ @ Writing buffer 0 to stream\\.")));
}

}  // namespace
