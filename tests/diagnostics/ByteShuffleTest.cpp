#include "diagnostics/ByteShuffle.h"

#include <gmock/gmock.h>

#include <cstring>
#include <vector>

namespace {

using namespace QovUtil;
using testing::ElementsAre;

template <class T>
std::vector<unsigned char> Bytes(const std::vector<T>& values) {
  std::vector<unsigned char> bytes(values.size() * sizeof(T));
  if (!bytes.empty()) std::memcpy(bytes.data(), values.data(), bytes.size());
  return bytes;
}

/// Returns values in which neighbouring bytes differ. Some of them are NaNs as floats.
template <class T>
std::vector<T> Sample(std::size_t size) {
  std::vector<T> values(size);
  auto* bytes = reinterpret_cast<unsigned char*>(values.data());
  for (std::size_t i = 0; i < size * sizeof(T); ++i) {
    bytes[i] = static_cast<unsigned char>(i * 167 + i / 256);
  }
  return values;
}

TEST(ByteShuffleTest, GroupsBytesByTheirPlace) {
  std::vector<std::uint32_t> values = {0x04030201, 0x08070605};
  ShuffleVectorBytes(values);
  EXPECT_THAT(Bytes(values), ElementsAre(1, 5, 2, 6, 3, 7, 4, 8));
  UnShuffleVectorBytes(values);
  EXPECT_THAT(values, ElementsAre(0x04030201, 0x08070605));
}

/// Moves each byte as the format defines: components and byte planes one after the other, and after
/// them the elements that do not fill a tuple.
template <class T>
std::vector<unsigned char> ShuffledByDefinition(const std::vector<T>& values, std::size_t width) {
  const auto before = Bytes(values);
  auto after = before;
  const std::size_t count = width == 0 ? 0 : values.size() / width;
  for (std::size_t i = 0; i < 4 * count * width; ++i) {
    const std::size_t byte = i % 4;
    const std::size_t component = i / 4 % width;
    const std::size_t tuple = i / 4 / width;
    after[4 * count * component + count * byte + tuple] = before[i];
  }
  return after;
}

template <class T>
void ExpectShuffled(std::size_t size, unsigned char width) {
  auto values = Sample<T>(size);
  const auto before = Bytes(values);
  const auto expected = ShuffledByDefinition(values, width);
  ShuffleMultiVectorBytes(values, width);
  EXPECT_EQ(Bytes(values), expected) << size << " elements, width " << int{width};
  std::vector<T> restored(size);
  UnShuffleMultiVectorBytes(expected.data(), width, restored);
  EXPECT_EQ(Bytes(restored), before) << size << " elements, width " << int{width};
  UnShuffleMultiVectorBytes(values, width);
  EXPECT_EQ(Bytes(values), before) << size << " elements, width " << int{width};
}

/// The sizes cover several tiles and incomplete ones.
TEST(ByteShuffleTest, FollowsItsDefinitionForAnySize) {
  for (const std::size_t size : {0U, 1U, 5U, 15U, 16U, 17U, 63U, 765U, 2047U, 2048U, 7001U}) {
    for (const unsigned char width : std::vector<unsigned char>{0, 1, 2, 3, 6, 130, 255}) {
      ExpectShuffled<std::uint32_t>(size, width);
      ExpectShuffled<float>(size, width);
    }
  }
}

}  // namespace
