#include <csignal>
#include <random>

#include "RyxMergeFixture.h"
#include "check/FileCheck.h"

namespace {

using namespace Qov::Test;
using testing::HasSubstr;

class Interruption : public RyxMergeProgram {
 protected:
  Outcome Merge() { return Run({mInputs[0], mInputs[1], mOutput}); }

  static bool IsSound(const std::string& path) {
    Qov::Tools::FileReport report(1);
    try {
      Qov::Tools::CheckFile(path, report);
    } catch (const Qov::Util::Exception&) {
      return false;
    }
    return report.mFindings.GetNumErrors() == 0;
  }

  const std::vector<std::string> mInputs = {Plate("a.ryx", 0), Plate("b.ryx", 0)};
  const std::string mBefore = ReadFile(mInputs[0]) + ReadFile(mInputs[1]);
};

TEST_F(Interruption, ByAFullDiskIsTold) {
  ASSERT_EQ(Merge().mStatus, 0);
  const std::size_t size = ReadFile(mOutput).size();
  for (const std::size_t most : {std::size_t{1000}, std::size_t{2799}, size - 1}) {
    mSurroundings.mMaxFileSize = most;
    const Outcome outcome = Merge();
    EXPECT_EQ(outcome.mStatus, 2) << most;
    EXPECT_THAT(outcome.mErr, HasSubstr("Exception \"")) << most;
    EXPECT_FALSE(IsSound(mOutput)) << most;
  }
  mSurroundings.mMaxFileSize = 0;
  EXPECT_EQ(Merge().mStatus, 0);
  EXPECT_EQ(Run({mInputs[0], mInputs[1], "/dev/full"}).mStatus, 2);
}

/// Whenever it comes, the inputs stay, what is left is no model or a whole one, and the next run
/// works.
TEST_F(Interruption, BySignalsLeavesTheNextRunAlone) {
  constexpr int kNumRuns = 60;
  constexpr unsigned kLongest = 12000;
  std::mt19937 random(1);
  for (int i = 0; i < kNumRuns; ++i) {
    const int signal = i % 2 == 0 ? SIGKILL : SIGTERM;
    const Outcome outcome =
        RunProgram({RYXMERGE_PROGRAM, mInputs[0], mInputs[1], mOutput}, mSurroundings, signal,
                   static_cast<unsigned>(random()) % kLongest);
    if (outcome.mStatus == 0) {
      EXPECT_TRUE(IsSound(mOutput));
    } else {
      EXPECT_EQ(outcome.mStatus, 128 + signal);
    }
  }
  EXPECT_EQ(Merge().mStatus, 0);
  EXPECT_TRUE(IsSound(mOutput));
  EXPECT_EQ(ReadFile(mInputs[0]) + ReadFile(mInputs[1]), mBefore);
}

TEST_F(Interruption, LogDoesNotFollowALinkOfSomebodyElse) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can make such a link";
  constexpr uid_t kSomebody = 12345;
  WriteFile(mDir / "precious", "ours");
  ASSERT_EQ(::symlink((mDir / "precious").c_str(), mLog.c_str()), 0);
  EXPECT_EQ(::lchown(mLog.c_str(), kSomebody, kSomebody), 0);
  const Outcome outcome = Merge();
  EXPECT_EQ(outcome.mStatus, 0);
  EXPECT_THAT(outcome.mErr, HasSubstr("Unable to set log file."));
  EXPECT_EQ(ReadFile(mDir / "precious"), "ours");
}

}  // namespace
