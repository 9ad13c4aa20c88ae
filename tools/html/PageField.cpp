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

/// Returns the range; null if no value is finite.
Json RangeJson(const FiniteRange& range) {
  if (range.mIsEmpty) return nullptr;
  return Json::array({JsonFloat(range.mLeast), JsonFloat(range.mGreatest)});
}

/// Returns the lengths of vectors of several components, or the values themselves.
std::vector<float> FindLengths(const PageValues& values) {
  if (values.mWidth == 1) return values.mValues;
  std::vector<float> lengths(values.mNumItems);
  for (std::size_t i = 0; i < lengths.size(); ++i) {
    double sum = 0;
    for (std::size_t k = 0; k < values.mWidth; ++k) {
      const double value = values.mValues[k * values.mNumItems + i];
      sum += value * value;
    }
    lengths[i] = static_cast<float>(std::sqrt(sum));
  }
  return lengths;
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

void PageValues::SubtractFrom(const PageValues& other) {
  for (std::size_t i = 0; i < mValues.size(); ++i) mValues[i] = other.mValues[i] - mValues[i];
}

std::vector<std::pair<std::size_t, float>> PageValues::FindGreatest(std::size_t count) const {
  const std::vector<float> lengths = FindLengths(*this);
  std::vector<std::size_t> items;
  for (std::size_t i = 0; i < lengths.size(); ++i) {
    if (std::isfinite(lengths[i]) && lengths[i] != 0.0F) items.push_back(i);
  }
  const std::size_t numFound = std::min(count, items.size());
  std::partial_sort(items.begin(), items.begin() + static_cast<std::ptrdiff_t>(numFound),
                    items.end(), [&](std::size_t a, std::size_t b) {
                      const float x = std::abs(lengths[a]);
                      const float y = std::abs(lengths[b]);
                      return x != y ? x > y : a < b;
                    });
  std::vector<std::pair<std::size_t, float>> greatest;
  for (std::size_t i = 0; i < numFound; ++i) greatest.emplace_back(items[i], lengths[items[i]]);
  return greatest;
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
  item.mJson["magnitudeRange"] =
      values.mWidth > 1 ? RangeJson(FiniteRange(FindLengths(values))) : Json();
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
