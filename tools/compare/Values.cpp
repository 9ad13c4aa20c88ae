#include "compare/Values.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>

#include "Qov/Util/Assert.h"
#include "ValueText.h"

namespace Qov::Tools {
namespace {

double Number(std::uint32_t bits, bool integer) {
  return integer ? static_cast<double>(bits) : static_cast<double>(std::bit_cast<float>(bits));
}

double Distance(double a, double b) {
  if (std::isnan(a) && std::isnan(b)) return 0.0;
  if (a == b) return 0.0;
  return std::fabs(a - b);  // NaN if one of them is
}

/// Orders distances; a NaN is larger than all numbers.
bool IsLarger(double distance, double than) {
  if (std::isnan(than)) return false;
  return std::isnan(distance) || distance > than;
}

template <bool kIntegers>
void CompareElements(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b,
                     const Tolerance* tolerance, ValueComparison& comparison) {
  std::uint64_t numDiffering = 0;
  double largest = -1.0;  // less than all distances
  for (std::size_t i = 0; i < a.size(); ++i) {
    const bool differs = a[i] != b[i];
    if (tolerance != nullptr && !kIntegers && differs &&
        tolerance->Accepts(std::bit_cast<float>(a[i]), std::bit_cast<float>(b[i]))) {
      continue;
    }
    numDiffering += differs ? 1 : 0;
    const double numberA = Number(a[i], kIntegers);
    const double numberB = Number(b[i], kIntegers);
    // True for most elements, also for equal ones. False for NaNs.
    if (std::fabs(numberA - numberB) <= largest || !differs) continue;
    const double distance = Distance(numberA, numberB);
    if (numDiffering > 1 && !IsLarger(distance, largest)) continue;
    comparison.mPosition = i;
    comparison.mBitsA = a[i];
    comparison.mBitsB = b[i];
    largest = distance;
  }
  comparison.mNumDiffering = numDiffering;
  if (numDiffering != 0) comparison.mDifference = largest;
}

}  // namespace

ValueComparison CompareValues(const std::vector<std::uint32_t>& a,
                              const std::vector<std::uint32_t>& b, bool integers,
                              const Tolerance* tolerance) {
  QOV_ASSERT(a.size() == b.size());
  ValueComparison comparison;
  comparison.mNumValues = a.size();
  comparison.mIntegers = integers;
  integers ? CompareElements<true>(a, b, tolerance, comparison)
           : CompareElements<false>(a, b, tolerance, comparison);
  return comparison;
}

std::uint64_t GetItem(const ValueComparison& comparison, std::uint8_t width) {
  return comparison.mPosition / std::max<std::uint64_t>(width, 1);
}

std::string DescribeDifference(const ValueComparison& comparison, std::uint8_t width) {
  return DescribeDifference(comparison, width, fmt::format("item {}", GetItem(comparison, width)));
}

std::string DescribeDifference(const ValueComparison& comparison, std::uint8_t width,
                               const std::string& item) {
  std::string place = item;
  if (width > 1) place += fmt::format(", component {}", comparison.mPosition % width);
  return fmt::format("{} of {} values differ, most at {}", comparison.mNumDiffering,
                     comparison.mNumValues, place);
}

std::string ElementText(std::uint32_t bits, bool integer) {
  if (integer) return fmt::format("{}", bits);
  const auto value = std::bit_cast<float>(bits);
  return std::isnan(value) ? fmt::format("NaN (0x{:08X})", bits) : FloatText(value);
}

}  // namespace Qov::Tools
