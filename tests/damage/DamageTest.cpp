#include <gtest/gtest.h>
#include <sys/resource.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "Qov/Ryx/RyxMerge.h"
#include "Qov/Ryx/StreamNames.h"
#include "check/FileCheck.h"
#include "support/CapturedErrors.h"
#include "support/Files.h"
#include "support/ModelBuilder.h"
#include "support/ModelCompare.h"
#include "support/ScopedEnvironment.h"
#include "support/Streams.h"
#include "support/TempDir.h"

/// Damaged files of every kind, each through a merge and a check.
namespace Qov::Test {
namespace {

/// The magic, the version, and the index with the items that are in use.
constexpr std::size_t kEndOfIndex = 16 + 4 + 8 * 139;
constexpr std::array<std::uint32_t, 4> kExtremes = {0, 1, 0x80000000U, 0xFFFFFFFFU};

/// Sanitizers take their time; all variants are for the build without.
#ifdef __SANITIZE_ADDRESS__
constexpr std::size_t kStep = 3;
#else
constexpr std::size_t kStep = 1;
#endif

void Limit(int resource, rlim_t most) {
  const rlimit limit{most, most};
  ::setrlimit(static_cast<__rlimit_resource>(resource), &limit);
}

/// Little memory, and some minutes of processor time.
void Confine() {
#ifndef __SANITIZE_ADDRESS__  // which takes terabytes of address space
  Limit(RLIMIT_AS, rlim_t{1} << 30);
#endif
  Limit(RLIMIT_CPU, 280);
}

class Damage : public testing::Test {
 protected:
  Damage() {
    QovRyx::Tree tree("PlateMaker", "1.0", false);
    BuildPlate(tree, {"Stress|LC1"}, 0, 5);
    AddViewPointPath(tree, "Walk", 1);
    SaveTree(tree, mDir / "whole.ryx");
    mWhole = ReadFile(mDir / "whole.ryx");
    mStreams = ReadStreams(mDir / "whole.ryx");
    WriteStreams(mDir / "plain.ryx", mStreams);
    mPlain = ReadFile(mDir / "plain.ryx");
    SavePlate(mDir / "good.ryx", {"Stress|LC1"}, 0);
    EXPECT_TRUE(CallsSound(mDir / "whole.ryx") && CallsSound(mDir / "plain.ryx"));
  }

  /// Of `n` variants of a file, each with what `damage(i)` makes of it.
  void ExpectNoHarm(std::size_t n, const std::function<std::string(std::size_t)>& damage) {
    EXPECT_EXIT(ExamineAll(n, damage), testing::ExitedWithCode(0), "");
  }

  /// In a process of its own, which ends with the first case that says what is wrong.
  [[noreturn]] void ExamineAll(std::size_t n,
                               const std::function<std::string(std::size_t)>& damage) const {
    Confine();
    for (std::size_t i = 0; i < n / kStep; ++i) {
      std::cerr << "case " << i << "\n";  // the last one is it if a signal ends the process
      const std::string trouble = Examine(damage(i * kStep), i % 2 == 0);
      if (trouble.empty()) continue;
      std::cerr << trouble << "\n";
      std::_Exit(1);
    }
    std::_Exit(0);
  }

  std::string Examine(const std::string& bytes, bool isFirst) const {
    const std::string path = mDir / "damaged.ryx";
    WriteFile(path, bytes);
    std::vector<std::string> inputs = {mDir / "good.ryx", path};
    if (isFirst) std::swap(inputs[0], inputs[1]);
    const std::string trouble = TryToMerge(inputs, CallsSound(path));
    if (!trouble.empty()) return trouble;
    return ReadFile(path) == bytes ? "" : "the input was changed";
  }

  static bool CallsSound(const std::string& path) {
    Tools::FileReport report(1);
    try {
      Tools::CheckFile(path, report);
    } catch (const Util::Exception&) {
      return false;
    }
    return report.mFindings.GetNumErrors() == 0;
  }

  std::string TryToMerge(const std::vector<std::string>& inputs, bool isCalledSound) const {
    const CapturedErrors errors;
    const int status = QovRyx::merge_as_datasets(inputs, mDir / "out.ryx");
    if (status == 0) {
      DescribeModel(mDir / "out.ryx");  // raises for an output that cannot be read
      return "";
    }
    if (status != 2) return "the status is " + std::to_string(status);
    if (errors.Text().empty()) return "no message";
    return isCalledSound ? "called sound, but refused: " + errors.Text() : "";
  }

  const ScopedEnvironment mThreads{"RYXMERGE_THREADS", "1"};
  const ScopedEnvironment mGrowth{"TELMORAX_DEFAULT_RYX_BLOCK_SIZE", "1000"};  // quicker
  const TempDir mDir;
  std::string mWhole;
  std::string mPlain;  ///< The same streams, not compressed.
  Streams mStreams;
};

std::string WithFlippedBit(std::string bytes, std::size_t bit) {
  bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ 1 << bit % 8);
  return bytes;
}

/// Case `i` puts one of the extremes at one of the places from `begin` on.
std::string WithExtreme(std::string bytes, std::size_t begin, std::size_t i) {
  const std::uint32_t value = kExtremes[i % kExtremes.size()];
  std::memcpy(bytes.data() + begin + i / kExtremes.size(), &value, sizeof value);
  return bytes;
}

TEST_F(Damage, EveryLength) {
  ExpectNoHarm(mWhole.size(), [this](std::size_t i) { return mWhole.substr(0, i); });
}

TEST_F(Damage, EveryBitOfHeaderAndIndex) {
  ExpectNoHarm(8 * kEndOfIndex, [this](std::size_t i) { return WithFlippedBit(mWhole, i); });
}

TEST_F(Damage, EveryBitOfTheTree) {
  const std::size_t start = 8 * mPlain.find(mStreams.at(QovRyx::kRyxTree));
  ExpectNoHarm(8 * mStreams.at(QovRyx::kRyxTree).size(),
               [&](std::size_t i) { return WithFlippedBit(mPlain, start + i); });
}

TEST_F(Damage, EveryNumberOfHeaderAndIndex) {
  ExpectNoHarm(kExtremes.size() * kEndOfIndex,
               [this](std::size_t i) { return WithExtreme(mWhole, 0, i); });
}

/// Lengths and counts are anywhere in them.
TEST_F(Damage, EveryNumberOfEveryStream) {
  for (const auto& [name, stream] : mStreams) {
    SCOPED_TRACE(name);
    if (stream.size() < sizeof(std::uint32_t)) continue;
    const std::size_t start = mPlain.find(stream);
    ExpectNoHarm(kExtremes.size() * (stream.size() - 3),
                 [&](std::size_t i) { return WithExtreme(mPlain, start, i); });
  }
}

}  // namespace
}  // namespace Qov::Test
