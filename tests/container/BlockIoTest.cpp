#include "Qov/Jbf/BlockIo.h"

#include <gtest/gtest.h>

#include "support/Blocks.h"
#include "support/Errors.h"

namespace QovJbf {
namespace {

using namespace Qov::Test;

template <class T>
T Decoded(const std::string& bytes, T target = T()) {
  Block block = BlockOf(bytes);
  CopyFromBlock(block, target);
  EXPECT_EQ(block.GetRemaining(), 0U);
  return target;
}

template <class T>
void ExpectRoundTrip(const T& value, const std::string& hex) {
  Block block;
  CopyToBlock(block, value);
  EXPECT_EQ(HexOf(block), hex);
  EXPECT_EQ(Decoded<T>(ContentOf(block)), value);
}

TEST(BlockIoTest, EncodesNumbersAsTheirBytes) {
  ExpectRoundTrip(std::uint32_t{0x01020304}, "04030201");
  ExpectRoundTrip(std::int32_t{-2}, "feffffff");
  ExpectRoundTrip(std::uint64_t{0x0102030405060708}, "0807060504030201");
  ExpectRoundTrip(std::uint16_t{0x0102}, "0201");
  ExpectRoundTrip(std::uint8_t{0xFE}, "fe");
  ExpectRoundTrip(1.5F, "0000c03f");
  ExpectRoundTrip(-2.0, "00000000000000c0");
  ExpectRoundTrip(true, "01");
  ExpectRoundTrip(QovRyx::Vector2{1, 2}, "0000803f00000040");
  ExpectRoundTrip(QovRyx::Vector3{1, 2, 3}, "0000803f0000004000004040");
  ExpectRoundTrip(QovRyx::ColourValue{1, 2, 3, 4}, "0000803f000000400000404000008040");
  ExpectRoundTrip(QovRyx::Quaternion{1, 2, 3, 4}, "0000803f000000400000404000008040");
  EXPECT_TRUE(Decoded<bool>("\x80"));
}

TEST(BlockIoTest, EncodesCollectionsElementByElement) {
  ExpectRoundTrip(std::vector<float>{1, 2}, "020000000000803f00000040");
  ExpectRoundTrip(std::vector<std::string>{"a", ""},
                  "02000000"
                  "0100000061"
                  "00000000");
  ExpectRoundTrip(std::vector<std::wstring>{L"b"},
                  "01000000"
                  "0100000062");
  ExpectRoundTrip(std::array<std::uint16_t, 2>{1, 2}, "01000200");
  ExpectRoundTrip(std::vector<std::pair<std::int32_t, std::string>>{{-1, "a"}},
                  "01000000"
                  "ffffffff"
                  "0100000061");
  ExpectRoundTrip(std::map<std::string, std::uint32_t>{{"b", 2}, {"a", 1}},
                  "02000000"
                  "0100000061"
                  "01000000"
                  "0100000062"
                  "02000000");
}

TEST(BlockIoTest, CountsDroppedEntriesAndCutTexts) {
  const ReadLosses before = GetReadLosses();
  const auto entry = [](const std::string& key, std::uint8_t value) {
    return Image(static_cast<std::uint32_t>(key.size())) + key + Image(value);
  };
  const std::string stored =
      Image(4U) + entry("b", 1) + entry("a", 2) + entry("b", 3) + entry(std::string("a\0x", 3), 4);
  using Map = std::map<std::string, std::uint8_t>;
  EXPECT_EQ(Decoded<Map>(stored), (Map{{"a", 2}, {"b", 1}}));  // the first entry of each key
  EXPECT_EQ(Decoded<std::string>(Image(2U) + std::string("a\0", 2)), "a");
  const ReadLosses lost = GetReadLosses() - before;
  EXPECT_EQ(lost.mNumEqualKeys, 2U);
  EXPECT_EQ(lost.mNumCutTexts, 1U);
}

TEST(BlockIoTest, KeepsTheTargetWhenAnEmptyStringIsRead) {
  EXPECT_EQ(Decoded<std::string>(Image(0U), "before"), "before");
  EXPECT_EQ(Decoded<std::string>(Image(2U) + std::string("\0x", 2), "before"), "");
  EXPECT_EQ(Decoded<std::string>(Image(3U) + std::string("a\0b", 3)), "a");
  const std::vector<std::string> before = {"kept", "dropped"};
  EXPECT_EQ(Decoded(Image(1U) + Image(0U), before), std::vector<std::string>{"kept"});
}

TEST(BlockIoTest, RefusesCountsThatDoNotFitIntoABlock) {
  Block block;
  for (const std::size_t count : {std::size_t{0xFFFFFFFC}, std::size_t{1} << 32}) {
    ExpectError(ErrorType::MemoryAllocationError, "Memory Allocation Error",
                [&] { Detail::PutCount(block, count, 1); });
  }
  EXPECT_EQ(block.GetSize(), 0U);
}

TEST(BlockIoTest, NarrowsWideCharacters) {
  Block block;
  CopyToBlock(block, std::wstring(L"\u00E9\u0141"));
  EXPECT_EQ(HexOf(block), "02000000e941");
  EXPECT_EQ(Decoded<std::wstring>(Image(1U) + "\xE9"), std::wstring(1, wchar_t{-0x17}));
  EXPECT_EQ(Decoded<std::wstring>(Image(0U), L"before"), L"");
}

}  // namespace
}  // namespace QovJbf
