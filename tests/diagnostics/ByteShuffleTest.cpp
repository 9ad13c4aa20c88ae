#include "Qov/Util/ByteShuffle.h"

#include <gmock/gmock.h>

#include <cstring>
#include <vector>

#include "diagnostics/BytePlanes.h"

namespace {

using QovUtil::ShuffleMultiVectorBytes;
using QovUtil::ShuffleVectorBytes;
using QovUtil::UnShuffleMultiVectorBytes;
using QovUtil::UnShuffleVectorBytes;
using testing::ElementsAre;

template <class T>
std::vector<unsigned char> Bytes(const std::vector<T>& values) {
  std::vector<unsigned char> bytes(values.size() * sizeof(T));
  if (!bytes.empty()) std::memcpy(bytes.data(), values.data(), bytes.size());
  return bytes;
}

/// Values whose bytes all differ from their neighbours'. As floats, some are NaNs.
template <class T>
std::vector<T> Sample(std::size_t size) {
  std::vector<T> values(size);
  auto* bytes = reinterpret_cast<unsigned char*>(values.data());
  for (std::size_t i = 0; i < size * sizeof(T); ++i) {
    bytes[i] = static_cast<unsigned char>(i * 167 + i / 256);
  }
  return values;
}

TEST(ByteShuffleTest, PlanesFollowOneAnother) {
  std::vector<std::uint32_t> values = {0x04030201, 0x08070605};
  ShuffleVectorBytes(values);
  EXPECT_THAT(Bytes(values), ElementsAre(1, 5, 2, 6, 3, 7, 4, 8));
  UnShuffleVectorBytes(values);
  EXPECT_THAT(values, ElementsAre(0x04030201, 0x08070605));
}

TEST(ByteShuffleTest, ComponentsAreShuffledAloneAndTheRestStays) {
  std::vector<std::uint32_t> values = {0x04030201, 0x14131211, 0x24232221, 0x08070605,
                                       0x18171615, 0x28272625, 0x99887766};
  ShuffleMultiVectorBytes(values, 3);
  EXPECT_THAT(Bytes(values),
              ElementsAre(0x01, 0x05, 0x02, 0x06, 0x03, 0x07, 0x04, 0x08,  // component 0
                          0x11, 0x15, 0x12, 0x16, 0x13, 0x17, 0x14, 0x18,  // component 1
                          0x21, 0x25, 0x22, 0x26, 0x23, 0x27, 0x24, 0x28,  // component 2
                          0x66, 0x77, 0x88, 0x99));                        // left over
}

TEST(ByteShuffleTest, LeavesAloneWhatHoldsNoTuple) {
  std::vector<std::uint32_t> values = {0x04030201, 0x08070605};
  const auto before = values;
  ShuffleMultiVectorBytes(values, 0);
  EXPECT_EQ(values, before);
  ShuffleMultiVectorBytes(values, 3);
  EXPECT_EQ(values, before);
  std::vector<float> empty;
  ShuffleVectorBytes(empty);
  UnShuffleMultiVectorBytes(empty, 3);
  EXPECT_TRUE(empty.empty());
}

/// Where the definition puts each byte, through several tiles and their ends.
TEST(ByteShuffleTest, FollowsItsDefinitionInArraysOfAnySize) {
  for (const std::size_t size : {15U, 16U, 17U, 2047U, 2048U, 7001U}) {
    for (const std::size_t width : {1U, 2U, 3U, 130U, 255U}) {
      auto values = Sample<std::uint32_t>(size);
      auto expected = Bytes(values);
      const auto before = expected;
      const std::size_t count = size / width;
      for (std::size_t i = 0; i < 4 * count * width; ++i) {
        const std::size_t byte = i % 4;
        const std::size_t component = i / 4 % width;
        const std::size_t tuple = i / 4 / width;
        expected[4 * count * component + count * byte + tuple] = before[i];
      }
      ShuffleMultiVectorBytes(values, static_cast<unsigned char>(width));
      ASSERT_EQ(Bytes(values), expected) << size << " elements, width " << width;
    }
  }
}

/// The kernels that are written for this processor, against those that serve any.
TEST(BytePlanesTest, AreTheSameHoweverTheyAreSplit) {
  for (const std::size_t count : {0U, 1U, 15U, 16U, 17U, 63U, 1000U}) {
    const auto elements = Bytes(Sample<std::uint32_t>(count));
    std::vector<unsigned char> bytes(4 * count);
    std::vector<unsigned char> plainBytes(4 * count);
    const auto planesOf = [count](std::vector<unsigned char>& all) {
      return QovUtil::Planes{all.data(), all.data() + count, all.data() + 2 * count,
                             all.data() + 3 * count};
    };
    const auto planes = planesOf(bytes);
    QovUtil::SplitPlanes(elements.data(), count, planes);
    QovUtil::SplitPlanesPlainly(elements.data(), 0, count, planesOf(plainBytes));
    EXPECT_EQ(bytes, plainBytes) << count;
    std::vector<unsigned char> joined(4 * count);
    std::vector<unsigned char> plainlyJoined(4 * count);
    const QovUtil::ConstPlanes source{planes[0], planes[1], planes[2], planes[3]};
    QovUtil::JoinPlanes(source, count, joined.data());
    QovUtil::JoinPlanesPlainly(source, 0, count, plainlyJoined.data());
    EXPECT_EQ(joined, elements) << count;
    EXPECT_EQ(plainlyJoined, elements) << count;
  }
}

template <class T>
class RoundTripTest : public testing::Test {};
using ElementTypes = testing::Types<std::uint32_t, float>;
TYPED_TEST_SUITE(RoundTripTest, ElementTypes);

TYPED_TEST(RoundTripTest, UnShufflingRestoresEveryByte) {
  for (const std::size_t size : {1U, 5U, 16U, 765U, 1000U, 4099U}) {
    for (const unsigned char width : std::vector<unsigned char>{0, 1, 2, 3, 4, 6, 9, 255}) {
      auto values = Sample<TypeParam>(size);
      const auto before = Bytes(values);
      ShuffleMultiVectorBytes(values, width);
      UnShuffleMultiVectorBytes(values, width);
      EXPECT_EQ(Bytes(values), before) << size << " elements, width " << int{width};
    }
  }
}

}  // namespace
