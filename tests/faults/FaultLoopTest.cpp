#include <gmock/gmock.h>

#include <filesystem>
#include <iostream>
#include <string>
#include <tuple>
#include <vector>

#include "Faults.h"
#include "Qov/Ryx/Merge.h"
#include "Qov/Ryx/RyxMerge.h"
#include "support/CapturedErrors.h"
#include "support/Files.h"
#include "support/ModelBuilder.h"
#include "support/ModelCompare.h"
#include "support/ScopedEnvironment.h"
#include "support/Soundness.h"
#include "support/TempDir.h"

/// Makes every call of a merge that can fail fail once, and then together with all later calls.
namespace Qov::Test {
namespace {

using Faults::Call;
using testing::IsEmpty;
using testing::Not;

constexpr int kFailed = 2;
constexpr const char* kBefore = "an output of before";

/// The paths, created before any call fails because that needs memory.
struct Paths {
  std::vector<std::string> mModels;
  std::vector<std::string> mViews;
  std::string mOutput;
};

struct Mode {
  const char* mName;
  int (*mMerge)(const Paths& paths);
  const char* mCopyBlocks = "0";
  /// The output of before stays unless the new one is complete.
  bool mIsSafe = false;

  friend void PrintTo(const Mode& mode, std::ostream* out) { *out << mode.mName; }
};

constexpr Mode kModes[] = {
    {"datasets",
     [](const Paths& paths) { return QovRyx::merge_as_datasets(paths.mModels, paths.mOutput); }},
    {"instances",
     [](const Paths& paths) {
       return QovRyx::merge_as_instances(paths.mModels, paths.mOutput,
                                         QovRyx::InstanceNaming::Plain);
     }},
    {"copies",
     [](const Paths& paths) { return QovRyx::merge_as_datasets(paths.mModels, paths.mOutput); },
     "1"},
    {"checked_copies",
     [](const Paths& paths) { return QovRyx::merge_as_datasets(paths.mModels, paths.mOutput); },
     "check"},
    {"views",
     [](const Paths& paths) {
       return QovRyx::merge_viewpoints_with_ryx(paths.mModels[0], paths.mViews, paths.mOutput);
     }},
};

/// Merges as `ryx merge --overwrite` does.
int MergeSafelyWith(QovJbf::Compressor compressor, const Paths& paths) {
  try {
    QovRyx::MergeRequest request;
    request.mInputs = {paths.mModels[0], paths.mModels[1], paths.mViews[0]};
    request.mOutput = paths.mOutput;
    request.mMode = QovRyx::MergeMode::Instances;
    request.mNames = QovRyx::MergedNames::Stem;
    request.mSettings.mOverwrite = true;
    request.mSettings.mCompressor = compressor;
    QovRyx::Merge(request);
    return 0;
  } catch (const std::exception& error) {
    std::cerr << error.what();
    return kFailed;
  }
}

int MergeSafely(const Paths& paths) { return MergeSafelyWith(QovJbf::Compressor::Fastest, paths); }
int MergeSafelyWithZlib(const Paths& paths) {
  return MergeSafelyWith(QovJbf::Compressor::Zlib, paths);
}

constexpr Mode kSafeModes[] = {{"safe", &MergeSafely, "0", true}};
constexpr Mode kSafeZlibModes[] = {{"safe_zlib", &MergeSafelyWithZlib, "0", true}};

struct Fault {
  const char* mName;
  Call mCall;

  friend void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.mName; }
};

constexpr Fault kFaults[] = {{"open", Call::Open},   {"close", Call::Close},  {"read", Call::Read},
                             {"write", Call::Write}, {"seek", Call::Seek},    {"tell", Call::Tell},
                             {"flush", Call::Flush}, {"memory", Call::Memory}};
constexpr Fault kFaultsOfZlib[] = {{"zlib", Call::Zlib}};
constexpr Fault kFaultsOfDisk[] = {{"sync", Call::Sync}, {"rename", Call::Rename}};

class FaultLoop : public testing::TestWithParam<std::tuple<Mode, Fault, std::string>> {
 protected:
  FaultLoop()
      : mCopies("RYXMERGE_COPY_BLOCKS", std::get<0>(GetParam()).mCopyBlocks),
        mThreads("RYXMERGE_THREADS", std::get<2>(GetParam())) {
    SavePlate(mDir / "a.ryx", {"Stress|LC1", "Stress|LC2"}, 0);
    SavePlate(mDir / "b.ryx", {"Stress|LC1", "Heat|LC1"}, 0);
    SaveViewPointFile(mDir / "v.vpt", "Walk");
    mInputs = ReadInputs();
    EXPECT_EQ(Merge(), 0);
    EXPECT_FALSE(IsUnfinished(mPaths.mOutput));
    mSound = DescribeModel(mPaths.mOutput);
  }

  int Merge() const { return std::get<0>(GetParam()).mMerge(mPaths); }
  std::string ReadInputs() const {
    return ReadFile(mDir / "a.ryx") + ReadFile(mDir / "b.ryx") + ReadFile(mDir / "v.vpt");
  }

  /// Merges with a fault at call `n`. Returns false if there were fewer calls.
  bool RunWithFault(std::size_t n, bool andLater) {
    WriteFile(mPaths.mOutput, kBefore);
    int status = 0;
    std::string errors;
    bool hasFailed = false;
    {
      const CapturedErrors captured;
      Faults::Arm(std::get<1>(GetParam()).mCall, n, andLater);
      status = Merge();
      hasFailed = Faults::Disarm();
      errors = captured.Text();
    }
    if (status == 0) {
      if (hasFailed) ++mNumRecovered;
      EXPECT_EQ(DescribeModel(mPaths.mOutput), mSound);
    } else {
      EXPECT_EQ(status, kFailed);
      EXPECT_THAT(errors, Not(IsEmpty()));
      ExpectNoNewOutput();
    }
    return hasFailed;
  }

  void ExpectNoNewOutput() const {
    if (!std::get<0>(GetParam()).mIsSafe) {
      EXPECT_TRUE(IsUnfinished(mPaths.mOutput));
      return;
    }
    const bool isBefore = ReadFile(mPaths.mOutput) == kBefore;
    EXPECT_TRUE(isBefore || DescribeModel(mPaths.mOutput) == mSound);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(mDir.GetPath()),
                            std::filesystem::directory_iterator()),
              4);  // the inputs and the output
  }

  /// Returns true if the output is unchanged or `ryx check` finds errors in it.
  static bool IsUnfinished(const std::string& path) {
    return ReadFile(path) == kBefore || !IsSound(path);
  }

  const ScopedEnvironment mGrowth{"TELMORAX_DEFAULT_RYX_BLOCK_SIZE", "1000"};
  const ScopedEnvironment mBlocks{"TELMORAX_MAX_RYX_BLOCK_SIZE", "300"};
  const ScopedEnvironment mCopies;
  const ScopedEnvironment mThreads;
  const TempDir mDir;
  const Paths mPaths{{mDir / "a.ryx", mDir / "b.ryx"}, {mDir / "v.vpt"}, mDir / "out.ryx"};
  std::string mInputs;
  std::string mSound;
  std::size_t mNumRecovered = 0;
};

TEST_P(FaultLoop, IsReportedAndLeavesNoReadableOutput) {
  for (const bool andLater : {false, true}) {
    std::size_t n = 1;
    while (RunWithFault(n, andLater) && !HasFailure()) ++n;
    if (HasFailure()) FAIL() << "call " << n << (andLater ? " and all later ones" : "");
    EXPECT_GT(n, 1U);  // otherwise no call was intercepted
    EXPECT_EQ(ReadInputs(), mInputs);
  }
  // A merge continues with one thread if there is no memory for several.
  const Call call = std::get<1>(GetParam()).mCall;
  const bool isMemory = call == Call::Memory || call == Call::Zlib;
  if (isMemory && std::get<2>(GetParam()) != "1") {
    EXPECT_GT(mNumRecovered, 0U);
  }
}

std::string NameOf(const testing::TestParamInfo<FaultLoop::ParamType>& test) {
  const auto& [mode, fault, threads] = test.param;
  return std::string(mode.mName) + "_" + fault.mName + "_" + threads;
}

INSTANTIATE_TEST_SUITE_P(Merges, FaultLoop,
                         testing::Combine(testing::ValuesIn(kModes), testing::ValuesIn(kFaults),
                                          testing::Values(std::string("1"), std::string("2"))),
                         NameOf);

INSTANTIATE_TEST_SUITE_P(MergesWithZlib, FaultLoop,
                         testing::Combine(testing::ValuesIn(kModes),
                                          testing::ValuesIn(kFaultsOfZlib),
                                          testing::Values(std::string("1"), std::string("2"))),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(SafeMergesWithZlib, FaultLoop,
                         testing::Combine(testing::ValuesIn(kSafeZlibModes),
                                          testing::ValuesIn(kFaultsOfZlib),
                                          testing::Values(std::string("1"), std::string("2"))),
                         NameOf);

INSTANTIATE_TEST_SUITE_P(SafeMerges, FaultLoop,
                         testing::Combine(testing::ValuesIn(kSafeModes), testing::ValuesIn(kFaults),
                                          testing::Values(std::string("1"), std::string("2"))),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(Disks, FaultLoop,
                         testing::Combine(testing::ValuesIn(kSafeModes),
                                          testing::ValuesIn(kFaultsOfDisk),
                                          testing::Values(std::string("1"))),
                         NameOf);

}  // namespace
}  // namespace Qov::Test
