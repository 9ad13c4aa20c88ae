#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <random>

#include "ryxFixture.h"
#include "support/BuildKind.h"
#include "support/Files.h"
#include "support/Soundness.h"

namespace Qov::Test {
namespace {

using testing::HasSubstr;

class Interruption : public RyxProgram {
 protected:
  Interruption() {
    for (const std::string& input : mInputs) SavePlate(input, {"Stress|LC1", "Stress|LC2"}, 0);
    mSurroundings.mEnvironment["PELORIN_TEMP_PATH"] = mDir.GetPath().string();
    mBefore = ReadInputs();
  }

  Outcome Merge(int signal = 0, unsigned microseconds = 0) const {
    return RunProgram({RYXMERGE_PROGRAM, mInputs[0], mInputs[1], mOutput}, mSurroundings, signal,
                      microseconds);
  }
  std::string ReadInputs() const { return ReadFile(mInputs[0]) + ReadFile(mInputs[1]); }

  /// Returns the output up to and including its first block, without the history, because it
  /// contains the date.
  std::string ReadHeavyData() const {
    constexpr std::size_t kSizeOfFirst = 16 + 4 + 133;
    constexpr std::size_t kFirst = 2800;
    const std::string bytes = ReadFile(mOutput);
    std::uint32_t size = 0;
    if (bytes.size() >= kFirst) std::memcpy(&size, bytes.data() + kSizeOfFirst, sizeof size);
    return bytes.substr(std::min(kFirst, bytes.size()), size);
  }

  const std::vector<std::string> mInputs = {mDir / "a.ryx", mDir / "b.ryx"};
  std::string mOutput = mDir / "out.ryx";
  std::string mBefore;
};

TEST_F(Interruption, ByAFullDiskIsReported) {
  ASSERT_EQ(Merge().mStatus, 0);
  const std::size_t size = ReadFile(mOutput).size();
  for (const std::size_t most : {std::size_t{1000}, std::size_t{2799}, size - 1}) {
    mSurroundings.mLimits[RLIMIT_FSIZE] = most;
    const Outcome outcome = Merge();
    EXPECT_EQ(outcome.mStatus, 2) << most;
    EXPECT_THAT(outcome.mErr, HasSubstr("Exception \"")) << most;
    EXPECT_FALSE(IsSound(mOutput)) << most;
  }
  mSurroundings.mLimits.clear();
  EXPECT_EQ(Merge().mStatus, 0);
  mOutput = "/dev/full";
  EXPECT_EQ(Merge().mStatus, 2);
}

/// Several threads take more memory than one, but must merge everything that one thread can merge.
TEST_F(Interruption, ByShortMemoryDoesNotDependOnThreads) {
  if (kIsSanitized) GTEST_SKIP() << "the address space cannot be limited";
  for (const std::string& input : mInputs) SavePlate(input, {"Stress|LC1", "Heat|LC1"}, 0, 400000);
  const rlim_t limits[] = {64, 72, 80, 88, 96, 112, 128, 256, 800};
  std::size_t numMerged = 0;
  std::string merged;
  for (const rlim_t megabytes : limits) {
    mSurroundings.mLimits[RLIMIT_AS] = megabytes << 20;
    mSurroundings.mEnvironment["RYXMERGE_THREADS"] = "1";
    if (Merge().mStatus != 0) continue;
    ++numMerged;
    merged = ReadHeavyData();
    for (const char* threads : {"0", "2", "16"}) {
      mSurroundings.mEnvironment["RYXMERGE_THREADS"] = threads;
      const Outcome outcome = Merge();
      EXPECT_EQ(outcome.mStatus, 0) << megabytes << " MB, threads: " << threads << outcome.mErr;
      EXPECT_TRUE(ReadHeavyData() == merged) << megabytes << " MB, threads: " << threads;
    }
  }
  EXPECT_GT(numMerged, 2U);
}

TEST_F(Interruption, ByAnotherWriterOfTheOutputIsReported) {
  SaveViewPointFile(mDir / "v.vpt", "walk");
  WriteFile(mOutput, "another run's");
  const int other = ::open(mOutput.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(::flock(other, LOCK_EX | LOCK_NB), 0);
  const std::string view = mDir / "v.vpt";
  const std::vector<std::string> runs[] = {{mInputs[0], mInputs[1]},
                                           {"--merge-as-instances", mInputs[0], mInputs[1]},
                                           {mInputs[0], view},
                                           {mInputs[0], mInputs[1], view}};
  for (const std::vector<std::string>& arguments : runs) {
    std::vector<std::string> command = {RYXMERGE_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    command.push_back(mOutput);
    const Outcome outcome = RunProgram(command, mSurroundings);
    EXPECT_EQ(outcome.mStatus, 2);
    EXPECT_THAT(outcome.mErr, HasSubstr("\"" + mOutput + "\" is being written by another run"));
    EXPECT_EQ(ReadFile(mOutput), "another run's");
  }
  EXPECT_THAT(
      RunProgram({RYX_PROGRAM, "plan", mInputs[0], mInputs[1], mOutput}, mSurroundings).mOut,
      HasSubstr("is being written by another run"));
  ::close(other);
  EXPECT_EQ(Merge().mStatus, 0);
}

/// A signal at any time must leave the inputs unchanged, no incomplete model, and nothing that
/// stops the next run.
TEST_F(Interruption, BySignalsDoesNotAffectTheNextRun) {
  constexpr int kNumRuns = 40;
  for (const std::string& input : mInputs) SavePlate(input, {"Stress|LC1"}, 0, 50000);
  mBefore = ReadInputs();
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  ASSERT_EQ(Merge().mStatus, 0);
  const std::chrono::duration<double, std::micro> whole = Clock::now() - start;
  std::mt19937 random(1);
  int numUnfinished = 0;
  for (int i = 0; i < kNumRuns; ++i) {
    std::filesystem::remove(mOutput);
    const int signal = i % 2 == 0 ? SIGKILL : SIGTERM;
    const Outcome outcome =
        Merge(signal, static_cast<unsigned>(random()) % static_cast<unsigned>(whole.count()));
    EXPECT_TRUE(outcome.mStatus == 0 || outcome.mStatus == 128 + signal);
    const bool isSound = IsSound(mOutput);
    EXPECT_TRUE(isSound || outcome.mStatus != 0);
    if (!isSound && std::filesystem::exists(mOutput)) ++numUnfinished;
  }
  EXPECT_GT(numUnfinished, 0);
  EXPECT_EQ(Merge().mStatus, 0);
  EXPECT_TRUE(IsSound(mOutput));
  EXPECT_EQ(ReadInputs(), mBefore);
}

}  // namespace
}  // namespace Qov::Test
