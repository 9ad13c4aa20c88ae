#include "Qov/Jbf/Block.h"

#include <gtest/gtest.h>

#include <limits>

#include "ContainerSupport.h"

namespace QovJbf {
namespace {

using namespace Qov::Test;

/// Puts the growth step back, which outlives the variable.
class BlockTest : public testing::Test {
 protected:
  ~BlockTest() override { default_block_size = 10485760; }
};

TEST_F(BlockTest, GrowsByTheStepAlsoWhenAWriteWouldJustFillIt) {
  const ScopedEnvironment unset(kGrowthVariable, std::nullopt);
  Block block;
  block.Put("abcd", 4);
  EXPECT_EQ(block.GetCapacity(), 10485760U);

  Block exact;
  exact.AllocateAdditionalMemory(8);
  exact.Put("abcd", 4);
  EXPECT_EQ(exact.GetCapacity(), 8U);
  const ScopedEnvironment small(kGrowthVariable, "16");
  exact.Put("efgh", 4);
  EXPECT_EQ(exact.GetCapacity(), 24U);
  EXPECT_EQ(ContentOf(exact), "abcdefgh");
}

TEST_F(BlockTest, TakesTheGrowthStepFromTheEnvironmentForGood) {
  const auto capacityAfter = [](std::uint32_t n) {
    Block block;
    block.Put("abcd", n);
    return block.GetCapacity();
  };
  {
    const ScopedEnvironment tooLarge(kGrowthVariable, "4294967295");
    EXPECT_EQ(capacityAfter(4), 10485760U);
  }
  {
    const ScopedEnvironment small(kGrowthVariable, "100");
    EXPECT_EQ(capacityAfter(4), 100U);
  }
  EXPECT_EQ(capacityAfter(4), 100U);
  const ScopedEnvironment noNumber(kGrowthVariable, "abc");
  EXPECT_EQ(capacityAfter(4), 4U);
  EXPECT_EQ(capacityAfter(1), 1U);
}

TEST_F(BlockTest, RefusesToPassFourGibibytes) {
  Block block = BlockOf("0123456789");
  block.SetPosition(10);
  const std::uint32_t tooMuch = std::numeric_limits<std::uint32_t>::max() - 9;
  ExpectError(ErrorType::MemoryAllocationError, "Memory Allocation Error",
              [&] { block.Put("never read", tooMuch); });
  EXPECT_EQ(ContentOf(block), "0123456789");
  EXPECT_EQ(block.GetPosition(), 10U);

  // Also where the buffer is larger than a block may be.
  ExpectError(ErrorType::MemoryAllocationError, "", [&] {
    block.CheckFreeSpaceAndAllocateMemory(std::numeric_limits<std::uint32_t>::max(), 1);
  });
}

TEST_F(BlockTest, ReadsAndSeeksUpToTheEndOnly) {
  Block block = BlockOf("abcd");
  std::string two = "..";
  block.Get(two.data(), 2);
  EXPECT_EQ(two, "ab");
  ExpectError(ErrorType::OutOfBounds, "Not enough bytes in the block",
              [&] { block.Get(two.data(), 3); });
  EXPECT_EQ(block.GetRemaining(), 2U);

  block.SetPosition(4);
  EXPECT_NO_THROW(block.Get(two.data(), 0));
  ExpectError(ErrorType::OutOfBounds, "Not enough bytes", [&] { block.Get(two.data(), 1); });
  ExpectError(ErrorType::OutOfBounds, "Invalid block position", [&] { block.SetPosition(5); });
  ExpectError(ErrorType::OutOfBounds, "Invalid block position",
              [&] { block.SetPosition(0x100000000U); });
}

TEST_F(BlockTest, OverwritesInTheMiddleWithoutLosingTheEnd) {
  Block block = BlockOf("abcdef");
  block.SetPosition(1);
  EXPECT_EQ(block.Put("XY", 2), 3U);
  EXPECT_EQ(ContentOf(block), "aXYdef");
}

TEST_F(BlockTest, ReleasesMemory) {
  Block block = BlockOf("abcd");
  block.ReleaseSpareMemory();
  EXPECT_EQ(block.GetCapacity(), 4U);
  block.SetPosition(4);
  block.Put("efgh", 4);
  EXPECT_EQ(ContentOf(block), "abcdefgh");
  block.ReleaseMemory();
  EXPECT_TRUE(block.IsReleased());
  EXPECT_EQ(block.GetSize(), 8U);
  EXPECT_EQ(block.GetRemaining(), 0U);
}

TEST_F(BlockTest, GoesToAFileAndBack) {
  const TempDir folder;
  const std::string path = folder / "block";
  std::FILE* file = std::fopen(path.c_str(), "wb+");
  Block().Write(file, true);
  BlockOf("abc").Write(file, true);
  BlockOf("abc").Write(file, false);
  std::fseek(file, 8, SEEK_SET);
  Block block = BlockOf("12");
  block.SetPosition(2);
  block.Read(file, 3);
  EXPECT_EQ(ContentOf(block), "12abc");
  EXPECT_EQ(block.GetPosition(), 2U);
  ExpectError(ErrorType::ReadError, "Unable to read from file", [&] { block.Read(file, 4); });
  EXPECT_EQ(block.GetSize(), 5U);
  std::fclose(file);
  EXPECT_EQ(ToHex(ReadBytes(path)),
            "00000000"
            "03000000"
            "616263"
            "616263");
}

TEST_F(BlockTest, ReportsAShortWrite) {
  const TempDir folder;
  WriteBytes(folder / "read only", "");
  std::FILE* file = std::fopen((folder / "read only").c_str(), "rb");
  const Block block = BlockOf("abc");
  for (const bool withSize : {false, true}) {
    ExpectError(ErrorType::WriteError, "Unable to write to file",
                [&] { block.Write(file, withSize); });
  }
  std::fclose(file);
}

}  // namespace
}  // namespace QovJbf
