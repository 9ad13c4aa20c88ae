#include <gmock/gmock.h>
#include <zlib.h>

#include <atomic>
#include <fstream>
#include <map>

#include "Qov/Jbf/JbFile.h"
#include "support/CapturedErrors.h"
#include "support/Errors.h"
#include "support/Files.h"
#include "support/ModelCompare.h"
#include "support/ScopedEnvironment.h"
#include "support/TempDir.h"

namespace {

/// Uncompressed bytes that zlib has written or read, in all threads.
std::atomic<std::uint64_t> gInflated = 0;
std::atomic<std::uint64_t> gDeflated = 0;

}  // namespace

// The linker redirects the library's calls of zlib to these functions.
extern "C" {
int __real_inflate(z_streamp stream, int flush);
int __real_deflate(z_streamp stream, int flush);

int __wrap_inflate(z_streamp stream, int flush) {
  const auto before = stream->total_out;
  const int result = __real_inflate(stream, flush);
  gInflated += stream->total_out - before;
  return result;
}

int __wrap_deflate(z_streamp stream, int flush) {
  const auto before = stream->total_in;
  const int result = __real_deflate(stream, flush);
  gDeflated += stream->total_in - before;
  return result;
}
}

namespace Qov::Test {
namespace {

using namespace QovRyx;
using QovJbf::JbFile;
using testing::HasSubstr;

constexpr std::size_t kNumNodes = 20000;
constexpr std::uint64_t kArraySize = kNumNodes * 4;
constexpr std::uint64_t kLittle = 2000;

class BlockCopiesTest : public testing::Test {
 protected:
  BlockCopiesTest() {
    SavePlate(mDir / "a.ryx", {"Stress", "Strain"}, 1, kNumNodes);
    SavePlate(mDir / "b.ryx", {"Stress"}, 2, kNumNodes);
  }

  /// Saves with copied blocks and counts the bytes that zlib processes.
  void SaveCopied(Tree& tree, const std::string& path, const char* mode = "1",
                  const char* numThreads = "1") {
    const ScopedEnvironment copy("RYXMERGE_COPY_BLOCKS", mode);
    const ScopedEnvironment threads("RYXMERGE_THREADS", numThreads);
    gInflated = gDeflated = 0;
    SaveTree(tree, path);
  }

  TempDir mDir;
  const ScopedEnvironment mThreads{"RYXMERGE_THREADS", "1"};
};

TEST_F(BlockCopiesTest, DoNotUseZlib) {
  Tree tree(false);
  MakeMergeRoot(tree);
  for (const char* name : {"a.ryx", "b.ryx"}) MergeFile(tree, mDir / name);
  SaveCopied(tree, mDir / "merged.ryx");
  EXPECT_EQ(gInflated, 0U);
  EXPECT_LT(gDeflated, kLittle);
  const std::string expected = DescribeModel(tree);
  EXPECT_EQ(DescribeModel(mDir / "merged.ryx"), expected);

  // A file with copied blocks can be read, and its blocks can be copied again.
  Tree again(false);
  LoadTree(again, mDir / "merged.ryx");
  SaveCopied(again, mDir / "again.ryx");
  EXPECT_EQ(DescribeModel(mDir / "again.ryx"), expected);
}

TEST_F(BlockCopiesTest, NeedHalfOfTheBlock) {
  // The coordinates take half of the block, the other three arrays a sixth each.
  const auto saveWithOthers = [this](const std::vector<std::size_t>& replaced) {
    Tree tree(false);
    LoadTree(tree, mDir / "a.ryx");
    Geometry& geometry = *AsGeometry(tree.GetNodes().GetReqNode(PlateIds::kGeometry));
    for (const std::size_t i : replaced) {
      const std::uint8_t width = geometry.GetVariables()[i].mValues.GetWidth();
      geometry.EditVariable(i).mValues = NumericArray::Of(Ramp(kNumNodes * width, 5.0F), width);
    }
    SaveCopied(tree, mDir / "saved.ryx");
    const std::uint64_t numInflated = gInflated;
    EXPECT_EQ(DescribeModel(mDir / "saved.ryx"), DescribeModel(tree));
    return numInflated;
  };
  EXPECT_EQ(saveWithOthers({1, 2}), 0U);
  EXPECT_GT(gDeflated, 2 * kArraySize);
  EXPECT_LT(gDeflated, 2 * kArraySize + kLittle);
  EXPECT_GT(saveWithOthers({0, 1, 2}), kArraySize);
  EXPECT_GT(gDeflated, 6 * kArraySize);
}

TEST_F(BlockCopiesTest, KeepBlocksNeedsTheWholeBlock) {
  const ScopedEnvironment copy("RYXMERGE_COPY_BLOCKS", "1");  // the settings count
  const auto countDeflated = [this](bool keepsBlocks, bool replaces) {
    Tree tree(false);
    LoadTree(tree, mDir / "a.ryx");
    Geometry& geometry = *AsGeometry(tree.GetNodes().GetReqNode(PlateIds::kGeometry));
    if (replaces) {
      geometry.EditVariable(1).mValues = NumericArray::Of(Ramp(kNumNodes, 5.0F));
    }
    gDeflated = 0;
    OutputSettings settings{.mCompressor = QovJbf::Compressor::Zlib, .mThreads = 1};
    if (keepsBlocks) settings.mKeepBlocks = BlockKeeping::Checked;
    tree.Save(mDir / "saved.ryx", "", settings);
    const std::uint64_t numDeflated = gDeflated;
    EXPECT_EQ(DescribeModel(mDir / "saved.ryx"), DescribeModel(tree));
    return numDeflated;
  };
  EXPECT_LT(countDeflated(true, false), kLittle);
  EXPECT_GT(countDeflated(false, false), 6 * kArraySize);
  EXPECT_GT(countDeflated(true, true), 6 * kArraySize);
}

TEST_F(BlockCopiesTest, LeaveOutArraysThatMustBeShuffledAgain) {
  Tree tree(false);
  LoadTree(tree, mDir / "a.ryx");
  Geometry& geometry = *AsGeometry(tree.GetNodes().GetReqNode(PlateIds::kGeometry));
  NumericArray& values = geometry.EditVariable(2).mValues;
  values = NumericArray(values.GetSize(), 5, values.GetLoader());
  const std::string expected = DescribeModel(tree);
  SaveCopied(tree, mDir / "copied.ryx");
  EXPECT_GT(gDeflated, kArraySize);
  EXPECT_LT(gDeflated, kArraySize + kLittle);
  EXPECT_EQ(DescribeModel(mDir / "copied.ryx"), expected);
  SaveTree(tree, mDir / "plain.ryx");
  EXPECT_EQ(DescribeModel(mDir / "plain.ryx"), expected);
}

/// Writes a byte of a file and keeps the time of the file, by which changes are detected.
void Overwrite(const std::string& path, std::streamoff at, char byte) {
  const auto time = std::filesystem::last_write_time(path);
  std::fstream(path, std::ios::in | std::ios::out | std::ios::binary).seekp(at).put(byte);
  std::filesystem::last_write_time(path, time);
}

/// Returns the text of the error and the lines on standard error.
template <class Action>
std::string FailureOf(Action action) {
  const CapturedErrors errors;
  try {
    action();
  } catch (const std::exception& error) {
    return std::string(error.what()) + "\n" + errors.Text();
  }
  return "no error";
}

TEST_F(BlockCopiesTest, AreCheckedAsIfTheyWereRead) {
  std::map<std::string, std::string> saved;
  for (const char* mode : {"0", "1", "check"}) {
    for (const char* threads : {"1", "3"}) {
      Tree tree(false);
      MakeMergeRoot(tree);
      for (const char* name : {"a.ryx", "b.ryx"}) MergeFile(tree, mDir / name);
      SaveCopied(tree, mDir / "merged.ryx", mode, threads);
      const std::string bytes = ReadFile(mDir / "merged.ryx");
      EXPECT_TRUE(saved.try_emplace(mode, bytes).first->second == bytes) << mode << threads;
    }
  }
  EXPECT_TRUE(saved["check"] == saved["1"]);
  EXPECT_FALSE(saved["check"] == saved["0"]);

  // Damages the compressed bytes and the checksum, then the length of the content.
  const auto reader = [this] {
    JbFile file;
    file.OpenFile(mDir / "b.ryx", "rb");
    return file.OpenStreamReader("Heavy Data");
  }();
  const auto block = reader->FindBlock(0, 1).value();
  const auto begin = static_cast<std::streamoff>(reader->GetPosition(block));
  for (const std::streamoff at : {begin + 4, begin + 1000, begin + block.mStoredSize - 1}) {
    const std::string sound = ReadFile(mDir / "b.ryx");
    Overwrite(mDir / "b.ryx", at, static_cast<char>(sound[static_cast<std::size_t>(at)] ^ 1));
    const auto failure = [&](const char* mode, const char* threads) {
      return FailureOf([&] {
        Tree tree(false);
        MakeMergeRoot(tree);
        for (const char* name : {"a.ryx", "b.ryx"}) MergeFile(tree, mDir / name);
        SaveCopied(tree, mDir / "damaged.ryx", mode, threads);
      });
    };
    const std::string checked = failure("check", "1");
    EXPECT_THAT(checked, HasSubstr("Damaged compressed block\nError -")) << at - begin;
    EXPECT_EQ(failure("check", "3"), checked);
    EXPECT_NE(failure("0", "1"), "no error");
    EXPECT_EQ(failure("1", "1"), "no error");
    WriteFile(mDir / "b.ryx", sound);
  }
  Tree tree(false);
  Overwrite(mDir / "b.ryx", begin,
            static_cast<char>(ReadFile(mDir / "b.ryx")[static_cast<std::size_t>(begin)] + 1));
  LoadTree(tree, mDir / "b.ryx");
  EXPECT_THAT(FailureOf([&] { SaveCopied(tree, mDir / "damaged.ryx", "check"); }),
              HasSubstr("Damaged compressed block"));
}

TEST_F(BlockCopiesTest, WithoutACheckCompareOnlyLengths) {
  Tree tree(false);
  LoadTree(tree, mDir / "a.ryx");
  Overwrite(mDir / "a.ryx", 2800 + 1000, '?');
  EXPECT_NO_THROW(SaveCopied(tree, mDir / "copied.ryx"));
  EXPECT_ANY_THROW(DescribeModel(mDir / "copied.ryx"));
  Overwrite(mDir / "a.ryx", 2800, '?');  // the length of the content
  ExpectError(ErrorType::MismatchError, "", [&] { SaveCopied(tree, mDir / "copied.ryx"); });
}

}  // namespace
}  // namespace Qov::Test
