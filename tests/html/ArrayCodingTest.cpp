#include "html/ArrayCoding.h"

#include <gmock/gmock.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "html/PageBuffers.h"
#include "html/PageText.h"
#include "support/Blocks.h"

namespace Qov::Test {
namespace {

using namespace Tools;
using testing::ElementsAre;

TEST(ArrayCoding, QuantizesFiniteValuesOfAnyMagnitude) {
  constexpr float kMost = std::numeric_limits<float>::max();
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  const std::vector<float> values = {1, 2, 3, std::nanf(""), kInfinity, -kInfinity};
  const FiniteRange range(values);
  EXPECT_EQ(range.mLeast, 1);
  EXPECT_EQ(range.mGreatest, 3);
  EXPECT_THAT(Quantize(values, range), ElementsAre(0, 32767, 65534, 65535, 65535, 65535));
  const std::vector<float> huge = {-kMost, 0, kMost};
  EXPECT_THAT(Quantize(huge, FiniteRange(huge), 65535), ElementsAre(0, 32768, 65535));
  const std::vector<float> same = {7, 7};
  EXPECT_THAT(Quantize(same, FiniteRange(same)), ElementsAre(0, 0));
  const std::vector<float> none = {std::nanf("")};
  EXPECT_TRUE(FiniteRange(none).mIsEmpty);
}

TEST(ArrayCoding, WritesTheBytesThatThePageReads) {
  std::vector<std::uint16_t> words = {0x0102, 0x0001, 0xFFFF};
  std::string bytes;
  AppendBytePlanes(std::span<const std::uint16_t>(words), bytes);
  EXPECT_EQ(ToHex(bytes),
            "0201ff"
            "0100ff");
  TakeDifferences(words);
  EXPECT_THAT(words, ElementsAre(0x0102, 0xFEFF, 0xFFFE));
  bytes.clear();
  const std::vector<float> floats = {1.0F, -2.5F};
  AppendBytePlanes(std::span<const float>(floats), bytes);
  EXPECT_EQ(ToHex(bytes),
            "0000"
            "0000"
            "8020"
            "3fc0");
  bytes.clear();
  AppendDifferences(std::vector<std::uint32_t>{5, 3, 3, 200, 0xFFFFFFFF}, bytes);
  EXPECT_EQ(ToHex(bytes),
            "0a"
            "03"
            "00"
            "8a03"
            "9103");
  bytes.clear();
  AppendIndices(std::vector<std::uint32_t>{0, 1, 2, 2, 1, 3, 0}, bytes);
  EXPECT_EQ(ToHex(bytes),
            "00"
            "00"
            "00"
            "01"
            "02"
            "00"
            "04");
}

TEST(PageText, IsBase64) {
  for (const auto& [bytes, text] : {std::pair("", ""), std::pair("f", "Zg=="),
                                    std::pair("fo", "Zm8="), std::pair("foo", "Zm9v"),
                                    std::pair("\xFB\xEF\xBE"
                                              "a",
                                              "++++YQ==")}) {
    EXPECT_EQ(Base64(bytes), text);
  }
}

TEST(PageText, CannotLeaveTheManifest) {
  const std::string hostile =
      "</script><!--<script>&amp;\"'\\\u2028\u2029\u202E\x01\x7F\xFF\xC0\x80\xED\xA0\x80";
  const Json manifest = {{PageText(hostile), PageText(hostile)}, {"raw", hostile}};
  const std::string text = FormatManifest(manifest);
  EXPECT_EQ(text.find_first_of("<>&"), text.npos);
  for (const char letter : text) EXPECT_TRUE(letter >= ' ' && letter < 0x7F);
  const Json read = Json::parse(text);
  EXPECT_EQ(read.begin().key(), PageText(hostile));
  EXPECT_EQ(PageText(hostile),
            "</script><!--<script>&amp;\"'\\\\\\xE2\\x80\\xA8\\xE2\\x80\\xA9\\xE2\\x80\\xAE\\x01"
            "\\x7F\\xFF\\xC0\\x80\\xED\\xA0\\x80");
}

}  // namespace
}  // namespace Qov::Test
