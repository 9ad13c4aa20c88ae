#include "Qov/Jbf/Index.h"

#include <gtest/gtest.h>

#include "ContainerSupport.h"

namespace QovJbf {
namespace {

using namespace Qov::Test;

TEST(IndexTest, CutsLongNames) {
  IndexItem item;
  item.mPosition = 99;
  item.mFlags2 = 0x80;
  Block block;
  for (const std::size_t length : {127U, 128U, 129U, 255U, 256U, 400U}) {
    item.mName = std::string(length, 'n');
    block.Reset();
    CopyToBlock(block, std::vector<IndexItem>{item});
    EXPECT_EQ(block.GetSize(), 4U + 139U);
    block.SetPosition(0);
    std::vector<IndexItem> read;
    CopyFromBlock(block, read);
    ASSERT_EQ(read.size(), 1U);
    EXPECT_EQ(read[0].mName, std::string(std::min<std::size_t>(length, 128), 'n'));
    EXPECT_EQ(read[0].mFlags2, 0x80);
    EXPECT_EQ(read[0].mPosition, 0U);
  }
}

TEST(IndexTest, ReadsTheLimitFromTheEnvironmentForEachNewStream) {
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

class IndexFileTest : public testing::Test {
 protected:
  IndexFileTest() { mFile.OpenFile(mFolder / "container", "wb+"); }

  Index& GetIndex() { return mFile.GetIndex(); }
  void Put(const std::string& name, const std::string& bytes, std::uint8_t flags) {
    GetIndex().Put(name, bytes.data(), bytes.size());
    GetIndex().AddFlags(name, flags);
  }
  void Write() {
    mFile.WriteHeader();
    GetIndex().WriteAllBuffersToFileStream(mFile.GetStream());
  }
  void Reopen() {
    mFile.CloseFile();
    mRead.OpenFile(mFolder / "container", "rb");
  }

  TempDir mFolder;
  JbFile mFile;
  JbFile mRead;
  const ScopedEnvironment mLimit{kLimitVariable, "1000"};
};

TEST_F(IndexFileTest, CutsAStreamAtItsLimit) {
  Index& index = GetIndex();
  for (std::uint32_t i = 0; i < 1500; ++i) index.Put("numbers", i);
  ASSERT_EQ(index.GetBlockSizeLimiter("numbers").mBlocks,
            (std::vector<std::uint64_t>{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(index.GetBlock(0).GetSize(), 1000U);
  EXPECT_EQ(index.GetBlock(0).GetCapacity(), 1000U) << "a full block has no spare memory";
  EXPECT_EQ(index.GetStreamLength("numbers"), 6000U);
  index.AddFlags("numbers", BlockFlag::kCompressed);

  std::uint32_t value = 0;
  index.SetStreamPosition("numbers", 0, nullptr);
  for (std::uint32_t i = 0; i < 1500; ++i) {
    index.Get("numbers", &value, sizeof value);
    ASSERT_EQ(value, i);
  }
  index.Get("numbers", &value, sizeof value);
  EXPECT_EQ(value, 1499U) << "reading after the end leaves the value";
  index.SetStreamPosition("numbers", 4 * 260, nullptr);
  index.Get("numbers", &value, sizeof value);
  EXPECT_EQ(value, 260U);
  ExpectError(ErrorType::OutOfBounds, "Not enough bytes",
              [&] { index.Get("numbers", &value, std::uint64_t{1} << 32); });

  Write();
  GetIndex().Put("numbers", "more", 4);  // not into a block that was written
  ExpectError(ErrorType::MismatchError, "Mis-match Error", [&] { Write(); });
  Reopen();
  for (std::uint32_t i = 0; i < 1500; ++i) {
    mRead.Get("numbers", value);
    ASSERT_EQ(value, i);
  }
}

TEST_F(IndexFileTest, FlushesFullBlocksInFileOrder) {
  Index& index = GetIndex();
  Put("a light one", "x", 0);
  Put("heavy", std::string(999, 'h'), BlockFlag::kFreezeWhenFull);
  index.FlushFrozen(mFile.GetStream());
  EXPECT_FALSE(index.IsFrozen(1)) << "not full yet";
  Put("heavy", "h", 0);
  ExpectError(ErrorType::NotImplemented, "Not Implemented",
              [&] { index.FlushFrozen(mFile.GetStream()); });

  Put("a light one", std::string(999, 'x'), BlockFlag::kFreezeWhenFull);
  index.FlushFrozen(mFile.GetStream());
  EXPECT_TRUE(index.IsFrozen(0));
  EXPECT_TRUE(index.IsFrozen(1));
  EXPECT_EQ(index.GetBlock(1).GetCapacity(), 0U);
  ExpectError(ErrorType::MismatchError, "Mis-match Error",
              [&] { index.WriteBufferToFileStream(1, mFile.GetStream()); });
}

TEST_F(IndexFileTest, SeeksInAnyOrderWithFewBlocksInMemory) {
  const std::string content = SomeBytes(50000, 4);
  PutInPieces(mFile, "packed", content, 250, kHeavy);
  PutInPieces(mFile, "plain", content, 250, BlockFlag::kFreezeWhenFull);
  Write();
  Reopen();
  const auto countHeld = [&] {
    std::uint64_t held = 0;
    for (const std::uint64_t k : mRead.GetIndex().GetBlockSizeLimiter("packed").mBlocks) {
      held += mRead.GetIndex().GetBlock(k).GetCapacity();
    }
    return held;
  };
  std::string read(250, '\0');
  for (std::size_t at = 0; at < content.size(); at += 250) {
    mRead.RequireBytes("packed", read.data(), 250);
    ASSERT_EQ(read, content.substr(at, 250));
    ASSERT_LE(countHeld(), 1001U);
  }
  std::mt19937 random(5);
  for (int i = 0; i < 300; ++i) {
    const std::string name = i % 2 == 0 ? "packed" : "plain";
    const std::size_t at = 250 * (random() % 199);
    mRead.SetBlockPosition(name, at);
    for (const std::size_t piece : {at, at + 250}) {  // the second one may be in the next block
      mRead.RequireBytes(name, read.data(), 250);
      ASSERT_EQ(read, content.substr(piece, 250));
    }
  }
  // Repeated seeks between two blocks do not decompress them again.
  for (int i = 0; i < 4; ++i) mRead.SetBlockPosition("packed", i % 2 == 0 ? 0 : 49000);
  EXPECT_GT(mRead.GetIndex().GetBlock(0).GetSize(), 0U);
  for (const auto& [name, offset] :
       {std::pair{"packed", 50000}, {"packed", 60000}, {"absent", 10}}) {
    mRead.SetBlockPosition(name, static_cast<std::uint64_t>(offset));
    ExpectError(ErrorType::OutOfBounds, "Not enough bytes",
                [&, stream = name] { mRead.RequireBytes(stream, read.data(), 1); });
  }
}

}  // namespace
}  // namespace QovJbf
