#include "html/ArrayCoding.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>

#include "Qov/Util/Assert.h"

namespace Qov::Tools {
namespace {

void AppendNumber(std::uint32_t number, std::string& bytes) {
  constexpr std::uint32_t kMore = 0x80;
  while (number >= kMore) {
    bytes += static_cast<char>((number & (kMore - 1)) | kMore);
    number >>= 7U;
  }
  bytes += static_cast<char>(number);
}

template <class Word, class Values, class ToWord>
void AppendPlanes(const Values& values, std::string& bytes, ToWord toWord) {
  bytes.reserve(bytes.size() + values.size() * sizeof(Word));
  for (std::size_t plane = 0; plane < sizeof(Word); ++plane) {
    for (const auto value : values) bytes += static_cast<char>(toWord(value) >> (8 * plane));
  }
}

}  // namespace

FiniteRange::FiniteRange(std::span<const float> values) {
  for (const float value : values) {
    if (!std::isfinite(value)) continue;
    mLeast = mIsEmpty ? value : std::min(mLeast, value);
    mGreatest = mIsEmpty ? value : std::max(mGreatest, value);
    mIsEmpty = false;
  }
}

std::vector<std::uint16_t> Quantize(std::span<const float> values, const FiniteRange& range,
                                    std::uint16_t greatestCode) {
  std::vector<std::uint16_t> codes(values.size(), kNoNumberCode);
  const double span = double{range.mGreatest} - double{range.mLeast};
  const double scale = span > 0 ? greatestCode / span : 0.0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!std::isfinite(values[i])) continue;
    codes[i] =
        static_cast<std::uint16_t>(std::lround((double{values[i]} - double{range.mLeast}) * scale));
  }
  return codes;
}

void TakeDifferences(std::span<std::uint16_t> values) {
  for (std::size_t i = values.size(); i-- > 1;) {
    values[i] = static_cast<std::uint16_t>(values[i] - values[i - 1]);
  }
}

void AppendBytePlanes(std::span<const std::uint16_t> values, std::string& bytes) {
  AppendPlanes<std::uint16_t>(values, bytes, [](std::uint16_t value) { return value; });
}

void AppendBytePlanes(std::span<const float> values, std::string& bytes) {
  AppendPlanes<std::uint32_t>(values, bytes,
                              [](float value) { return std::bit_cast<std::uint32_t>(value); });
}

void AppendDifferences(std::span<const std::uint32_t> values, std::string& bytes) {
  std::uint32_t previous = 0;
  for (const std::uint32_t value : values) {
    const std::uint32_t difference = value - previous;
    const std::uint32_t sign = (difference >> 31U) == 0 ? 0 : ~std::uint32_t{0};
    AppendNumber((difference << 1U) ^ sign, bytes);
    previous = value;
  }
}

void AppendIndices(std::span<const std::uint32_t> indices, std::string& bytes) {
  std::uint32_t numUsed = 0;
  for (const std::uint32_t index : indices) {
    QOV_ASSERT(index <= numUsed);
    AppendNumber(numUsed - index, bytes);
    if (index == numUsed) ++numUsed;
  }
}

}  // namespace Qov::Tools
