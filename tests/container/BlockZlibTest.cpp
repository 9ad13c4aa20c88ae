#include <gtest/gtest.h>

#include "ContainerSupport.h"
#include "Qov/Jbf/BlockZlibCompressor.h"
#include "Qov/Jbf/BlockZlibUnCompressor.h"

namespace QovJbf {
namespace {

using namespace Qov::Test;

/// Returns the content of a block of these bytes after the transformation.
template <class Transformation>
std::string Transformed(const std::string& bytes, Transformation transformation) {
  Block block = BlockOf(bytes);
  transformation(block);
  EXPECT_EQ(block.GetRemaining(), 0U);
  return ContentOf(block);
}
std::string Compressed(const std::string& content) {
  return Transformed(content, BlockZlibCompressor{6});
}
std::string UnCompressed(const std::string& stored) {
  return Transformed(stored, BlockZlibUnCompressor());
}

TEST(BlockZlibTest, PutsTheLengthBeforeAZlibStream) {
  EXPECT_EQ(ToHex(Compressed("")),
            "00000000"
            "789c030000000001");
  EXPECT_EQ(ToHex(Compressed("aaaaaaaaaaaaaaaa")),
            "10000000"
            "789c4b4c44050033980611");
}

TEST(BlockZlibTest, DecompressesWhatItCompressed) {
  for (const std::size_t n : {0U, 1U, 5U, 1000000U}) {
    std::string bytes = SomeBytes(n, 1);
    EXPECT_EQ(UnCompressed(Compressed(bytes)), bytes) << n;
    std::mt19937 random(2);
    for (char& byte : bytes) byte = static_cast<char>(random());  // incompressible
    EXPECT_EQ(UnCompressed(Compressed(bytes)), bytes) << n;
  }
}

TEST(BlockZlibTest, ReportsDamageAndChecksTheLengthBeforeItAllocates) {
  const std::string content = "some content";
  const std::string stored = Compressed(content);
  const std::string stream = stored.substr(4);
  std::string wrongSum = stored;
  wrongSum.back() ^= 1;
  const CapturedErrors errors;
  try {
    UnCompressed(wrongSum);
    ADD_FAILURE() << "a wrong checksum passed";
  } catch (const DamagedBlock& damage) {
    EXPECT_STREQ(damage.what(), "Damaged compressed block");
  }
  EXPECT_EQ(errors.Text(), "Error -3 while uncompressing block \n");
  for (const std::string& damaged :
       {stored.substr(0, stored.size() - 6), Image(12U), Image(11U) + stream}) {
    EXPECT_THROW(UnCompressed(damaged), DamagedBlock);
  }
  EXPECT_EQ(UnCompressed(Image(13U) + stream), content);
  for (const std::string& lie :
       {Image(0xFFFFFFFFU) + stream, Image(40000U) + stream, std::string("abc"), std::string()}) {
    ExpectError(ErrorType::OutOfBounds, "Not enough bytes in the block",
                [&] { UnCompressed(lie); });
  }
}

}  // namespace
}  // namespace QovJbf
