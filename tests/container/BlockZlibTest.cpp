#include <gtest/gtest.h>

#include "ContainerSupport.h"
#include "Qov/Jbf/BlockZlibCompressor.h"
#include "Qov/Jbf/BlockZlibUnCompressor.h"

namespace QovJbf {
namespace {

using namespace Qov::Test;

std::string Compressed(const std::string& content) {
  Block block = BlockOf(content);
  BlockZlibCompressor{6}(block);
  EXPECT_EQ(block.GetRemaining(), 0U);
  return ContentOf(block);
}

std::string UnCompressed(const std::string& stored) {
  Block block = BlockOf(stored);
  BlockZlibUnCompressor()(block);
  EXPECT_EQ(block.GetRemaining(), 0U);
  return ContentOf(block);
}

TEST(BlockZlibTest, PutsTheLengthBeforeAZlibStream) {
  EXPECT_EQ(ToHex(Compressed("")),
            "00000000"
            "789c030000000001");
  EXPECT_EQ(ToHex(Compressed("aaaaaaaaaaaaaaaa")),
            "10000000"
            "789c4b4c44050033980611");
}

TEST(BlockZlibTest, RestoresWhatWasCompressed) {
  for (const std::size_t n : {0U, 1U, 5U, 64U, 65535U, 1000000U}) {
    std::string noise = SomeBytes(n, 1);
    std::mt19937 random(2);
    EXPECT_EQ(UnCompressed(Compressed(noise)), noise) << n;
    for (char& byte : noise) byte = static_cast<char>(random());  // does not compress at all
    EXPECT_EQ(UnCompressed(Compressed(noise)), noise) << n;
    EXPECT_EQ(UnCompressed(Compressed(std::string(n, 'x'))), std::string(n, 'x')) << n;
  }
}

TEST(BlockZlibTest, ReportsDamage) {
  std::string stored = Compressed("some content");
  stored.back() ^= 1;
  const CapturedError error;
  try {
    UnCompressed(stored);
    ADD_FAILURE() << "a wrong checksum passed";
  } catch (const DamagedBlock& damage) {
    EXPECT_STREQ(damage.what(), "Damaged compressed block");
  }
  EXPECT_EQ(error.Text(), "Error -3 while uncompressing block \n");
  EXPECT_THROW(UnCompressed(stored.substr(0, stored.size() - 6)), DamagedBlock);
  EXPECT_THROW(UnCompressed(Image(12U)), DamagedBlock);
}

TEST(BlockZlibTest, ChecksTheLengthBeforeItTakesMemory) {
  const std::string stream = Compressed("some content").substr(4);
  const CapturedError error;
  EXPECT_THROW(UnCompressed(Image(11U) + stream), DamagedBlock);
  EXPECT_EQ(UnCompressed(Image(13U) + stream), "some content");
  for (const std::string& lie :
       {Image(0xFFFFFFFFU) + stream, Image(40000U) + stream, std::string("abc"), std::string()}) {
    ExpectError(ErrorType::OutOfBounds, "Not enough bytes in the block",
                [&] { UnCompressed(lie); });
  }
}

}  // namespace
}  // namespace QovJbf
