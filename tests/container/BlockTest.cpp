#include "Qov/Jbf/Block.h"

#include <gtest/gtest.h>

#include "ContainerSupport.h"

namespace QovJbf {
namespace {

using namespace Qov::Test;

/// Restores the growth step, because it keeps its value after the variable is reset.
class BlockTest : public testing::Test {
 protected:
  ~BlockTest() override { default_block_size = 10485760; }

  static std::uint64_t CapacityAfter(std::uint32_t n) {
    Block block;
    block.Put("abcd", n);
    return block.GetCapacity();
  }
};

TEST_F(BlockTest, GrowsByTheStepEvenIfAWriteFitsExactly) {
  Block exact;
  exact.AllocateAdditionalMemory(8);
  exact.Put("abcd", 4);
  EXPECT_EQ(exact.GetCapacity(), 8U);
  const ScopedEnvironment small(kGrowthVariable, "16");
  exact.Put("efgh", 4);
  EXPECT_EQ(exact.GetCapacity(), 24U);
  EXPECT_EQ(ContentOf(exact), "abcdefgh");
}

TEST_F(BlockTest, KeepsTheGrowthStepOfTheEnvironment) {
  const ScopedEnvironment unset(kGrowthVariable, std::nullopt);
  EXPECT_EQ(CapacityAfter(4), 10485760U);
  for (const auto& [text, capacity] :
       {std::pair{"4294967295", 10485760U}, std::pair{"100", 100U}}) {
    const ScopedEnvironment environment(kGrowthVariable, text);
    EXPECT_EQ(CapacityAfter(4), capacity);
  }
  EXPECT_EQ(CapacityAfter(4), 100U);
  const ScopedEnvironment noNumber(kGrowthVariable, "abc");
  EXPECT_EQ(CapacityAfter(4), 4U);
  EXPECT_EQ(CapacityAfter(1), 1U);
}

TEST_F(BlockTest, RefusesMoreThanFourGibibytes) {
  constexpr std::uint32_t kMost = 0xFFFFFFFF;
  Block block = BlockOf("0123456789");
  block.SetPosition(10);
  ExpectError(ErrorType::MemoryAllocationError, "Memory Allocation Error",
              [&] { block.Put("never read", kMost - 9); });
  EXPECT_EQ(ContentOf(block), "0123456789");
  EXPECT_EQ(block.GetPosition(), 10U);
  // The same if the buffer is larger than the limit of a block.
  ExpectError(ErrorType::MemoryAllocationError, "",
              [&] { block.CheckFreeSpaceAndAllocateMemory(kMost, 1); });
}

TEST_F(BlockTest, ReadsAndSeeksOnlyUpToTheEnd) {
  Block block = BlockOf("abcd");
  std::string two = "..";
  block.Get(two.data(), 2);
  EXPECT_EQ(two, "ab");
  ExpectError(ErrorType::OutOfBounds, "Not enough bytes in the block",
              [&] { block.Get(two.data(), 3); });
  EXPECT_EQ(block.GetRemaining(), 2U);
  block.SetPosition(4);
  EXPECT_NO_THROW(block.Get(two.data(), 0));
  for (const std::uint64_t position : {std::uint64_t{5}, std::uint64_t{1} << 32}) {
    ExpectError(ErrorType::OutOfBounds, "Invalid block position",
                [&] { block.SetPosition(position); });
  }
}

TEST_F(BlockTest, OverwritesInTheMiddleAndReleasesMemory) {
  Block block = BlockOf("abcdef");
  block.SetPosition(1);
  EXPECT_EQ(block.Put("XY", 2), 3U);
  EXPECT_EQ(ContentOf(block), "aXYdef");
  block.ReleaseSpareMemory();
  EXPECT_EQ(block.GetCapacity(), 6U);
  block.SetPosition(6);
  block.Put("gh", 2);
  EXPECT_EQ(ContentOf(block), "aXYdefgh");
  block.ReleaseMemory();
  EXPECT_TRUE(block.IsReleased());
  EXPECT_EQ(block.GetSize(), 8U);
  EXPECT_EQ(block.GetRemaining(), 0U);
}

TEST_F(BlockTest, IsWrittenToAFileAndReadBack) {
  const TempDir folder;
  std::FILE* file = std::fopen((folder / "block").c_str(), "wb+");
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
  EXPECT_EQ(ToHex(ReadFile(folder / "block")),
            "00000000"
            "03000000"
            "616263"
            "616263");

  std::FILE* readOnly = std::fopen((folder / "block").c_str(), "rb");
  for (const bool withSize : {false, true}) {
    ExpectError(ErrorType::WriteError, "Unable to write to file",
                [&] { block.Write(readOnly, withSize); });
  }
  std::fclose(readOnly);
}

}  // namespace
}  // namespace QovJbf
