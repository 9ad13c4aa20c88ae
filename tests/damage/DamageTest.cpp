#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "Program.h"
#include "Qov/Ryx/RyxMerge.h"
#include "model/StreamNames.h"
#include "support/BuildKind.h"
#include "support/CapturedErrors.h"
#include "support/Files.h"
#include "support/ModelBuilder.h"
#include "support/ModelCompare.h"
#include "support/OldFile.h"
#include "support/RandomModel.h"
#include "support/ScopedEnvironment.h"
#include "support/Soundness.h"
#include "support/Streams.h"
#include "support/TempDir.h"

/// Runs a merge and a command of ryx on each of many damaged files.
namespace Qov::Test {
namespace {

/// The end of the magic, the version and the used items of the index.
constexpr std::size_t kEndOfIndex = 16 + 4 + 8 * 139;
constexpr std::array<std::uint32_t, 4> kExtremes = {0, 1, 0x80000000U, 0xFFFFFFFFU};

struct Sample {
  const char* mName;
  void (*mSave)(const std::string& path);

  friend void PrintTo(const Sample& sample, std::ostream* out) { *out << sample.mName; }
};

void SavePlateWithViews(const std::string& path) {
  QovRyx::Tree tree("PlateMaker", "1.0", false);
  BuildPlate(tree, {"Stress|LC1"}, 0, 5);
  AddViewPointPath(tree, "Walk", 1);
  SaveTree(tree, path);
}

void SaveRandomModel(const std::string& path) {
  QovRyx::Tree tree(false);
  RandomModel(8).Fill(tree);
  SaveTree(tree, path);
}

void SaveOldModel(const std::string& path) {
  SavePlate(path, {"Stress|LC1"}, 0, 3);
  WriteStreams(path, ReadStreams(path), "0.7");
}

const Sample kSamples[] = {{"Plate", &SavePlateWithViews},
                           {"RandomModel", &SaveRandomModel},
                           {"OldModel", &SaveOldModel},
                           {"OldestModel", &SaveOldestModel}};

/// Collects the output of a program in memory.
class OutputBuffer {
 public:
  OutputBuffer() : mStream(::open_memstream(&mText, &mSize)) {}
  ~OutputBuffer() {
    std::fclose(mStream);
    std::free(mText);
  }
  OutputBuffer(const OutputBuffer&) = delete;
  OutputBuffer& operator=(const OutputBuffer&) = delete;

  std::FILE* GetStream() { return mStream; }
  std::string Get() {
    std::fflush(mStream);
    return {mText, mSize};
  }

 private:
  char* mText = nullptr;
  std::size_t mSize = 0;
  std::FILE* mStream;
};

/// The status and the output of a ryx command.
struct CommandResult {
  int mStatus = 0;
  std::string mOut;
  std::string mErr;
};

CommandResult RunRyx(const std::vector<std::string>& arguments) {
  std::vector<const char*> words = {"ryx"};
  for (const std::string& word : arguments) words.push_back(word.c_str());
  OutputBuffer printed;
  OutputBuffer reported;
  Tools::Output output(printed.GetStream(), {});
  Tools::Output errors(reported.GetStream(), {});
  const int status =
      Tools::RunProgram(static_cast<int>(words.size()), words.data(), output, errors);
  return {status, printed.Get(), reported.Get()};
}

/// Returns true if a message reports a lack of memory. Small files must not cause that.
bool ReportsLackOfMemory(const std::string& text) {
  const auto tells = [&text](const char* words) { return text.find(words) != std::string::npos; };
  return tells("Memory Allocation Error") || tells("bad_alloc") || tells("memory");
}

void Limit(int resource, rlim_t most) {
  const rlimit limit{most, most};
  ::setrlimit(static_cast<__rlimit_resource>(resource), &limit);
}

/// Limits the process to 1 GiB of address space and 280 s of processor time.
void LimitResources() {
  // Sanitizers need terabytes of address space.
  if (!kIsSanitized) Limit(RLIMIT_AS, rlim_t{1} << 30);
  Limit(RLIMIT_CPU, 280);
}

class Damage : public testing::TestWithParam<Sample> {
 protected:
  Damage() {
    GetParam().mSave(mDir / "whole.ryx");
    mWhole = ReadFile(mDir / "whole.ryx");
    mStreams = ReadStreams(mDir / "whole.ryx");
    WriteStreams(mDir / "plain.ryx", mStreams, mWhole.substr(8, 3));
    mPlain = ReadFile(mDir / "plain.ryx");
    SavePlate(mGood, {"Stress|LC1"}, 0);
    SaveViewPointFile(mViews, "Walk");
    EXPECT_TRUE(IsSound(mDir / "whole.ryx") && IsSound(mDir / "plain.ryx"));
  }

  /// Examines `n` damaged files in a child process; `damage(i)` returns their bytes.
  void ExpectNoHarm(std::size_t n, const std::function<std::string(std::size_t)>& damage) {
    EXPECT_EXIT(ExamineAll(n, damage), testing::ExitedWithCode(0), "");
  }

  /// Ends the process with status 1 at the first case that fails, else with 0.
  [[noreturn]] void ExamineAll(std::size_t n,
                               const std::function<std::string(std::size_t)>& damage) const {
    LimitResources();
    constexpr std::size_t kStep = kIsSlow ? 13 : 1;
    for (std::size_t i = 0; i * kStep < n; ++i) {
      std::cerr << "case " << i << "\n";  // shows the failing case if a signal ends the process
      const std::string trouble = Examine(damage(i * kStep), i);
      if (trouble.empty()) continue;
      std::cerr << trouble << "\n";
      std::_Exit(1);
    }
    std::exit(0);
  }

  /// Runs one merge mode and one command of ryx on the file; `i` selects them in turn. Returns the
  /// first problem, or an empty text.
  std::string Examine(const std::string& bytes, std::size_t i) const {
    WriteFile(mDamaged, bytes);
    std::string trouble = TryToMerge(i, IsSound(mDamaged));
    if (trouble.empty()) trouble = TryToShow(i);
    if (!trouble.empty()) return trouble;
    return ReadFile(mDamaged) == bytes ? "" : "the input was changed";
  }

  static constexpr std::size_t kNumMerges = 7;
  static constexpr std::size_t kWithCopies = 5;

  int Merge(std::size_t i) const {
    switch (i % kNumMerges) {
      case 0:
        return QovRyx::merge_as_datasets({mGood, mDamaged}, mOutput);
      case 1:
        return QovRyx::merge_as_datasets({mDamaged, mGood}, mOutput);
      case 2:
        return QovRyx::merge_as_instances({mGood, mDamaged}, mOutput,
                                          QovRyx::InstanceNaming::AutomaticSuffix);
      case 3:
        return QovRyx::merge_as_instances({mDamaged, mGood}, mOutput,
                                          QovRyx::InstanceNaming::FileSuffix);
      case 4:
        return QovRyx::merge_viewpoints_with_ryx(mDamaged, {mViews}, mOutput);
      case kWithCopies: {
        const ScopedEnvironment copies("RYXMERGE_COPY_BLOCKS", "1");
        return QovRyx::merge_as_datasets({mDamaged, mGood}, mOutput);
      }
      default:
        return QovRyx::merge_viewpoints_with_ryx(mGood, {mDamaged}, mOutput);
    }
  }

  std::string TryToMerge(std::size_t i, bool isSound) const {
    const CapturedErrors errors;
    const int status = Merge(i);
    if (status == 0) {
      // Raises an error if the output cannot be read. Copied blocks are not verified.
      if (i % kNumMerges != kWithCopies) DescribeModel(mOutput);
      return "";
    }
    if (status != 2) return "the status is " + std::to_string(status);
    const std::string text = errors.Text();
    if (text.find("The file was") == std::string::npos)
      return "the message does not name a file: " + text;
    if (ReportsLackOfMemory(text)) return "a wrong size caused a lack of memory: " + text;
    return isSound ? "ryx check finds no error, but the merge fails: " + text : "";
  }

  std::string TryToShow(std::size_t i) const {
    const std::string mesh = std::to_string(PlateIds::kGeometry);
    const std::array<std::vector<std::string>, 15> commands = {
        {{"info", mDamaged},
         {"ls", mDamaged},
         {"dump", mDamaged, "--view-point", "0"},
         {"dump", mDamaged, mesh, "0"},
         {"dump", mDamaged, "--attributes", mesh},
         {"dump", mDamaged, "--node-set", std::to_string(PlateIds::kSets)},
         {"dump", mDamaged, "--stream", QovRyx::kLightData},
         {"dump", mDamaged, "--blocks"},
         {"check", mDamaged},
         {"diff", mGood, mDamaged},
         {"diff", mDamaged, mGood},
         {"plan", mDamaged, mGood, mOutput},
         {"plan", mGood, mDamaged, mOutput},
         {"verify", mDamaged, mGood, mGood},
         {"verify", mGood, mDamaged, mGood}}};
    const std::vector<std::string>& command = commands[i % commands.size()];
    const CommandResult result = RunRyx(command);
    const bool isReported = result.mStatus == 0 || (result.mStatus == 1 && !result.mOut.empty()) ||
                            (result.mStatus == 2 && result.mErr.starts_with("ryx"));
    return isReported && !ReportsLackOfMemory(result.mErr)
               ? ""
               : fmt::format("{} ends with {}: {}", command[0], result.mStatus, result.mErr);
  }

  const ScopedEnvironment mThreads{"RYXMERGE_THREADS", "1"};
  const ScopedEnvironment mGrowth{"TELMORAX_DEFAULT_RYX_BLOCK_SIZE", "1000"};  // saves time
  const TempDir mDir;
  const std::string mGood = mDir / "good.ryx";
  const std::string mViews = mDir / "views.vpt";
  const std::string mDamaged = mDir / "damaged.ryx";
  const std::string mOutput = mDir / "out.ryx";
  std::string mWhole;
  std::string mPlain;  ///< The same streams, not compressed.
  Streams mStreams;
};

std::string WithFlippedBit(std::string bytes, std::size_t bit) {
  bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ 1 << bit % 8);
  return bytes;
}

/// Writes one of the extremes at one of the positions from `begin` on; `i` selects both.
std::string WithExtreme(std::string bytes, std::size_t begin, std::size_t i) {
  const std::uint32_t value = kExtremes[i % kExtremes.size()];
  std::memcpy(bytes.data() + begin + i / kExtremes.size(), &value, sizeof value);
  return bytes;
}

TEST_P(Damage, EveryLength) {
  ExpectNoHarm(mWhole.size(), [this](std::size_t i) { return mWhole.substr(0, i); });
}

using DamageOfThePlate = Damage;  // header and index are similar in all samples

TEST_P(DamageOfThePlate, EveryBitOfHeaderAndIndex) {
  ExpectNoHarm(8 * kEndOfIndex, [this](std::size_t i) { return WithFlippedBit(mWhole, i); });
}

TEST_P(Damage, EveryBitOfTheTree) {
  const std::size_t start = 8 * mPlain.find(mStreams.at(QovRyx::kRyxTree));
  ExpectNoHarm(8 * mStreams.at(QovRyx::kRyxTree).size(),
               [&](std::size_t i) { return WithFlippedBit(mPlain, start + i); });
}

TEST_P(DamageOfThePlate, EveryNumberOfHeaderAndIndex) {
  ExpectNoHarm(kExtremes.size() * kEndOfIndex,
               [this](std::size_t i) { return WithExtreme(mWhole, 0, i); });
}

/// Lengths and counts may be at any position.
TEST_P(Damage, EveryNumberOfEveryStream) {
  for (const auto& [name, stream] : mStreams) {
    SCOPED_TRACE(name);
    if (stream.size() < sizeof(std::uint32_t)) continue;
    const std::size_t start = mPlain.find(stream);
    ExpectNoHarm(kExtremes.size() * (stream.size() - 3),
                 [&](std::size_t i) { return WithExtreme(mPlain, start, i); });
  }
}

/// The checksum is at the end of each block. No value may be shown before the checksum is verified.
TEST_P(DamageOfThePlate, DamagedValuesAreNeverShownAsSound) {
  constexpr std::size_t kNumFlips = kIsSlow ? 40 : 200;
  const ScopedEnvironment blocks("TELMORAX_MAX_RYX_BLOCK_SIZE", "400");
  QovRyx::Tree tree("PlateMaker", "1.0", false);
  BuildPlate(tree, {"Stress|LC1", "Stress|LC2"}, 0, 60);
  AddViewPointPath(tree, "Walk", 1);
  SaveTree(tree, mDamaged);
  const std::string whole = ReadFile(mDamaged);
  WriteFile(mDir / "other.ryx", whole);

  std::vector<std::vector<std::string>> commands = {{"ls", mDamaged},
                                                    {"ls", "--json", "--node", "4", mDamaged},
                                                    {"diff", mDir / "other.ryx", mDamaged},
                                                    {"dump", mDamaged, "--node-set", "5"},
                                                    {"dump", mDamaged, "--view-point", "0"},
                                                    {"dump", mDamaged, "--attributes", "4"}};
  for (const char* position : {"0", "1", "2", "3"}) {
    commands.push_back({"dump", mDamaged, "4", position, "--format", "npy"});
  }
  for (const auto& [stream, bytes] : mStreams) {
    commands.push_back({"dump", mDamaged, "--stream", stream});
  }
  std::vector<std::string> outputs;
  for (const auto& command : commands) outputs.push_back(RunRyx(command).mOut);

  const CapturedErrors errors;
  constexpr std::size_t kFirstBlock = 2800;
  const std::size_t numBits = 8 * (whole.size() - kFirstBlock);
  std::size_t numRefused = 0;
  for (std::size_t i = 0; i < kNumFlips; ++i) {
    const std::size_t bit = 8 * kFirstBlock + i * numBits / kNumFlips;
    WriteFile(mDamaged, WithFlippedBit(whole, bit));
    for (std::size_t k = 0; k < commands.size(); ++k) {
      const CommandResult result = RunRyx(commands[k]);
      numRefused += result.mStatus == 2 ? 1U : 0U;
      EXPECT_TRUE(result.mStatus == 2 || (result.mStatus == 0 && result.mOut == outputs[k]))
          << "bit " << bit << ", " << testing::PrintToString(commands[k]) << " ends with "
          << result.mStatus;
    }
  }
  EXPECT_GT(numRefused, kNumFlips);
}

std::string NameOf(const testing::TestParamInfo<Sample>& test) { return test.param.mName; }

INSTANTIATE_TEST_SUITE_P(Samples, Damage, testing::ValuesIn(kSamples), NameOf);
INSTANTIATE_TEST_SUITE_P(Samples, DamageOfThePlate, testing::Values(kSamples[0]), NameOf);

}  // namespace
}  // namespace Qov::Test
