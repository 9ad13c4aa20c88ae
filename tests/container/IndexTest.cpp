#include "Qov/Jbf/Index.h"

#include <gtest/gtest.h>

#include "ContainerSupport.h"

namespace QovJbf {
namespace {

using namespace Qov::Test;

constexpr std::uint8_t kHeavy = BlockFlag::kCompressed | BlockFlag::kFreezeWhenFull;

TEST(IndexTest, StoresAnItemIn139Bytes) {
  IndexItem item;
  item.mId = 7;
  item.mName = "Heavy Data";
  item.mPosition = 99;
  item.mSize = 0x01020304;
  item.mFlags = kHeavy;
  item.mFlags2 = 0x80;
  Block block;
  CopyToBlock(block, item);
  EXPECT_EQ(HexOf(block),
            "07"
            "80000000"
            "48656176792044617461" +
                std::string(2 * 118, '0') +
                "04030201"
                "21"
                "80");

  for (const std::size_t length : {127U, 128U, 129U, 255U, 256U, 400U}) {
    item.mName = std::string(length, 'n');
    block.Reset();
    CopyToBlock(block, std::vector<IndexItem>{item});
    block.SetPosition(0);
    std::vector<IndexItem> read;
    CopyFromBlock(block, read);
    ASSERT_EQ(read.size(), 1U);
    EXPECT_EQ(read[0].mName, std::string(std::min<std::size_t>(length, 128), 'n'));
    EXPECT_EQ(read[0].mFlags2, 0x80);
    EXPECT_EQ(read[0].mPosition, 0U);
  }
}

TEST(IndexTest, GrowsByAnIndexBlockWhenTheSlotsAreUsedUp) {
  Index index;
  EXPECT_EQ(index.GetWritingBlockIndex("stream 0"), 0U);
  EXPECT_EQ(index.GetItems().size(), 20U);
  EXPECT_EQ(index.GetPosition(0), 2800U);
  for (std::uint64_t i = 1; i < 19; ++i) {
    EXPECT_EQ(index.GetWritingBlockIndex("stream " + std::to_string(i)), i);
  }
  EXPECT_EQ(index.GetWritingBlockIndex("stream 19"), 20U);
  EXPECT_EQ(index.GetItems().size(), 220U);
  EXPECT_EQ(index.GetItems()[19].mName, "\vIndex Block ");
  EXPECT_EQ(index.GetItems()[19].mSize, 27804U);
  EXPECT_EQ(index.GetItems()[19].mFlags, BlockFlag::kFreezeWhenFull);
  EXPECT_EQ(index.GetBlockSizeLimiter("\vIndex Block ").mLimit, 27804U);
  for (std::uint64_t i = 21; i < 219; ++i) {
    EXPECT_EQ(index.GetWritingBlockIndex("stream " + std::to_string(i)), i);
  }
  EXPECT_EQ(index.GetWritingBlockIndex("the next"), 220U);
  EXPECT_EQ(index.GetItems().size(), 420U);
  EXPECT_EQ(index.GetPosition(220), 2800U + 2 * 27804U);
}

TEST(IndexTest, CutsAStreamAtItsLimit) {
  const ScopedEnvironment limit(kLimitVariable, "100");
  Index index;
  for (std::uint32_t i = 0; i < 150; ++i) index.Put("numbers", i);
  const BlockSizeLimiter& stream = index.GetBlockSizeLimiter("numbers");
  ASSERT_EQ(stream.mBlocks, (std::vector<std::uint64_t>{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(index.GetBlock(0).GetSize(), 100U);
  EXPECT_EQ(index.GetBlock(0).GetCapacity(), 100U) << "spare memory of a full block";
  EXPECT_EQ(index.GetStreamLength("numbers"), 600U);

  index.SetStreamPosition("numbers", 0, nullptr);
  std::uint32_t value = 0;
  for (std::uint32_t i = 0; i < 150; ++i) {
    index.Get("numbers", &value, sizeof value);
    ASSERT_EQ(value, i);
  }
  index.Get("numbers", &value, sizeof value);
  EXPECT_EQ(value, 149U) << "an exhausted stream is as good as absent";
  index.SetStreamPosition("numbers", 4 * 26, nullptr);
  index.Get("numbers", &value, sizeof value);
  EXPECT_EQ(value, 26U);
}

TEST(IndexTest, TakesTheLimitFromTheEnvironmentForEachNewStream) {
  Index index;
  const auto limitOf = [&](const std::string& name) {
    index.GetWritingBlockIndex(name);
    return index.GetBlockSizeLimiter(name).mLimit;
  };
  const ScopedEnvironment unset(kLimitVariable, std::nullopt);
  EXPECT_EQ(limitOf("unset"), 209715200U);
  const ScopedEnvironment tooLarge(kLimitVariable, "4294967295");
  EXPECT_EQ(limitOf("too large"), 209715200U);
  const ScopedEnvironment largest(kLimitVariable, "4294967294");
  EXPECT_EQ(limitOf("largest"), 4294967294U);
  EXPECT_EQ(limitOf("unset"), 209715200U);
}

TEST(IndexTest, LeavesTheTargetOfAnAbsentStream) {
  Index index;
  std::uint32_t value = 5;
  EXPECT_NO_THROW(index.Get("absent", &value, sizeof value));
  EXPECT_EQ(value, 5U);
  ExpectError(ErrorType::ElementNotFound, "Element Not Found",
              [&] { index.GetReadingBlockIndex("absent"); });
  ExpectError(ErrorType::ElementNotFound, "", [&] { index.GetBlockSizeLimiter("absent"); });
  ExpectError(ErrorType::ElementNotFound, "", [&] { index.GetStreamLength("absent"); });
  EXPECT_NO_THROW(index.AddFlags("absent", 1));
  index.Put("short", std::uint8_t{1});
  index.SetStreamPosition("short", 0, nullptr);
  ExpectError(ErrorType::OutOfBounds, "Not enough bytes", [&] { index.Get("short", &value, 4); });
}

class IndexFileTest : public testing::Test {
 protected:
  IndexFileTest() { mFile.OpenFile(mFolder / "container", "wb+"); }

  void Put(const std::string& name, const std::string& bytes, std::uint8_t flags) {
    Index& index = mFile.GetIndex();
    index.Put(name, bytes.data(), bytes.size());
    index.AddFlags(name, flags);
  }

  TempDir mFolder;
  JbFile mFile;
  const ScopedEnvironment mLimit{kLimitVariable, "1000"};
};

TEST_F(IndexFileTest, CountsUncompressedBytesOfFrozenBlocks) {
  Index& index = mFile.GetIndex();
  mFile.WriteHeader();
  const std::string content = SomeBytes(100000, 1);
  PutInPieces(mFile, "Heavy Data", content, 700, kHeavy);
  EXPECT_EQ(index.GetStreamLength("Heavy Data"), content.size());
  index.WriteAllBuffersToFileStream(mFile.GetStream());

  // The items' sizes are those of the compressed blocks, in the file as in memory.
  std::uint64_t end = 2800;
  for (std::uint64_t k = 0; k < index.GetItems().size(); ++k) {
    EXPECT_EQ(index.GetPosition(k), end);
    end += index.GetItems()[k].mSize;
  }
  mFile.CloseFile();
  EXPECT_EQ(std::filesystem::file_size(mFolder / "container"), end);
  EXPECT_LT(end, content.size());
  EXPECT_EQ(ReadStreams(mFolder / "container").at("Heavy Data"), content);
}

TEST_F(IndexFileTest, FlushesFullBlocksInFileOrderOnly) {
  Index& index = mFile.GetIndex();
  Put("a light one", "x", 0);
  Put("heavy", std::string(999, 'h'), BlockFlag::kFreezeWhenFull);
  index.FlushFrozen(mFile.GetStream());
  EXPECT_FALSE(index.GetItems()[1].mFrozen) << "not full yet";
  Put("heavy", "h", 0);
  ExpectError(ErrorType::NotImplemented, "Not Implemented",
              [&] { index.FlushFrozen(mFile.GetStream()); });

  Put("a light one", std::string(999, 'x'), BlockFlag::kFreezeWhenFull);
  index.FlushFrozen(mFile.GetStream());
  EXPECT_TRUE(index.GetItems()[0].mFrozen);
  EXPECT_TRUE(index.GetItems()[1].mFrozen);
  EXPECT_EQ(index.GetBlock(1).GetCapacity(), 0U);
  ExpectError(ErrorType::MismatchError, "Mis-match Error",
              [&] { index.WriteBufferToFileStream(1, mFile.GetStream()); });
}

TEST_F(IndexFileTest, ReportsAFileThatCannotBeWritten) {
  Index& index = mFile.GetIndex();
  Put("stream", "x", 0);
  JbFile readOnly;
  readOnly.OpenFile(mFolder / "container", "rb");
  ExpectError(ErrorType::WriteError, "Unable to write to file",
              [&] { index.WriteAllBuffersToFileStream(readOnly.GetStream()); });
}

TEST_F(IndexFileTest, KeepsOneBlockOfAStreamInMemory) {
  std::string content = SomeBytes(20000, 3);
  PutInPieces(mFile, "stream", content, 500, kHeavy);
  mFile.WriteHeader();
  mFile.GetIndex().WriteAllBuffersToFileStream(mFile.GetStream());
  mFile.CloseFile();

  JbFile file;
  file.OpenFile(mFolder / "container", "rb");
  std::string read(500, '\0');
  for (std::size_t at = 0; at < content.size(); at += 500) {
    file.RequireBytes("stream", read.data(), 500);
    ASSERT_EQ(read, content.substr(at, 500));
    std::uint64_t held = 0;
    for (const std::uint64_t k : file.GetIndex().GetBlockSizeLimiter("stream").mBlocks) {
      held += file.GetIndex().GetBlock(k).GetCapacity();
    }
    ASSERT_LE(held, 1001U);
  }
  ExpectError(ErrorType::OutOfBounds, "Not enough bytes",
              [&] { file.RequireBytes("stream", read.data(), 1); });
}

TEST_F(IndexFileTest, SeeksForwardAndBackward) {
  const std::string content = SomeBytes(50000, 4);
  PutInPieces(mFile, "packed", content, 250, kHeavy);
  PutInPieces(mFile, "plain", content, 250, BlockFlag::kFreezeWhenFull);
  mFile.WriteHeader();
  mFile.GetIndex().WriteAllBuffersToFileStream(mFile.GetStream());
  mFile.CloseFile();

  JbFile file;
  file.OpenFile(mFolder / "container", "rb");
  std::mt19937 random(5);
  std::string read(250, '\0');
  for (int i = 0; i < 300; ++i) {
    const std::string name = i % 2 == 0 ? "packed" : "plain";
    const std::size_t at = 250 * (random() % 199);
    file.SetBlockPosition(name, at);
    for (const std::size_t piece : {at, at + 250}) {  // the second one may be in the next block
      file.RequireBytes(name, read.data(), 250);
      ASSERT_EQ(read, content.substr(piece, 250));
    }
  }
  // Whoever goes to and fro does not have the same blocks inflated again and again.
  for (int i = 0; i < 4; ++i) file.SetBlockPosition("packed", i % 2 == 0 ? 0 : 49000);
  const auto& blocks = file.GetIndex().GetBlockSizeLimiter("packed").mBlocks;
  EXPECT_GT(file.GetIndex().GetBlock(blocks.front()).GetSize(), 0U);
  for (const std::uint64_t pastTheEnd : {50000U, 60000U}) {
    file.SetBlockPosition("packed", pastTheEnd);
    ExpectError(ErrorType::OutOfBounds, "", [&] { file.RequireBytes("packed", read.data(), 1); });
  }
  file.SetBlockPosition("absent", 10);
  ExpectError(ErrorType::OutOfBounds, "", [&] { file.RequireBytes("absent", read.data(), 1); });
}

}  // namespace
}  // namespace QovJbf
