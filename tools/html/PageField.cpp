#include "html/PageField.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>

#include "html/ArrayCoding.h"

namespace Qov::Tools {
namespace {

Json RangeJson(const FiniteRange& range) {
  return Json::array({JsonFloat(range.mLeast), JsonFloat(range.mGreatest)});
}

/// Returns the range of the lengths of the vectors.
Json LengthRangeJson(const PageValues& values) {
  std::vector<float> lengths(values.mNumItems);
  for (std::size_t i = 0; i < lengths.size(); ++i) {
    double sum = 0;
    for (std::size_t k = 0; k < values.mWidth; ++k) {
      const double value = values.mValues[k * values.mNumItems + i];
      sum += value * value;
    }
    lengths[i] = static_cast<float>(std::sqrt(sum));
  }
  return RangeJson(FiniteRange(lengths));
}

/// Returns true if the differences of neighbours are mostly small, so that they compress better
/// than the codes.
bool IsSmooth(std::span<const std::uint16_t> codes) {
  constexpr std::int16_t kSmall = 4096;
  std::size_t numSmall = 0;
  for (std::size_t i = 1; i < codes.size(); ++i) {
    const auto difference = static_cast<std::int16_t>(codes[i] - codes[i - 1]);
    if (difference > -kSmall && difference < kSmall) ++numSmall;
  }
  return numSmall * 2 > codes.size();
}

}  // namespace

PageValues::PageValues(const ExportResult& result, std::span<const std::uint32_t> positions)
    : mNumItems(positions.size()), mWidth(result.mWidth), mValues(mNumItems * mWidth) {
  constexpr std::uint32_t kMostExact = 1U << std::numeric_limits<float>::digits;
  std::vector<std::uint32_t> bits;
  LoadValues(result, bits);
  for (std::size_t i = 0; i < mNumItems; ++i) {
    const std::size_t first = positions[i] * mWidth;
    for (std::size_t k = 0; k < mWidth; ++k) {
      float& value = mValues[k * mNumItems + i];
      if (first + k >= bits.size()) {
        value = std::numeric_limits<float>::quiet_NaN();
      } else if (result.mIsUnsigned) {
        value = static_cast<float>(bits[first + k]);
        if (bits[first + k] > kMostExact && double{value} != bits[first + k]) ++mNumRounded;
      } else {
        value = std::bit_cast<float>(bits[first + k]);
      }
    }
  }
}

PageItem MakeFieldItem(const PageValues& values) {
  PageItem item;
  Json& ranges = item.mJson["ranges"] = Json::array();
  std::vector<std::uint16_t> codes;
  codes.reserve(values.mValues.size());
  for (std::size_t k = 0; k < values.mWidth; ++k) {
    const std::span component(values.mValues.data() + k * values.mNumItems, values.mNumItems);
    const FiniteRange range(component);
    ranges.push_back(RangeJson(range));
    const std::vector<std::uint16_t> more = Quantize(component, range);
    codes.insert(codes.end(), more.begin(), more.end());
  }
  item.mJson["magnitudeRange"] = values.mWidth > 1 ? LengthRangeJson(values) : Json();
  const bool isSmooth = IsSmooth(codes);
  for (std::size_t k = 0; isSmooth && k < values.mWidth; ++k) {
    TakeDifferences(std::span(codes).subspan(k * values.mNumItems, values.mNumItems));
  }
  std::string bytes;
  AppendBytePlanes(std::span<const std::uint16_t>(codes), bytes);
  item.mBuffers.emplace_back("values",
                             PageBuffer(codes.size(), isSmooth ? "u16-delta" : "u16", bytes));
  item.mJson["exact"] = nullptr;
  return item;
}

PageBuffer CodeExactValues(const PageValues& values) {
  std::string bytes;
  AppendBytePlanes(std::span<const float>(values.mValues), bytes);
  return {values.mValues.size(), "f32", bytes};
}

}  // namespace Qov::Tools
