#include "compare/Values.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <span>
#include <type_traits>

#include "Qov/Util/Assert.h"
#include "ValueKernels.h"
#include "ValueText.h"

namespace Qov::Tools {
namespace {

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

using Elements = std::span<const std::uint32_t>;

/// Compares the elements of two arrays, a part at a time.
template <class T>
class ElementComparison {
 public:
  ElementComparison(const Tolerance* tolerance, ValueComparison& comparison)
      : mTolerance(std::is_same_v<T, float> ? tolerance : nullptr), mComparison(comparison) {}

  void Compare(Elements a, Elements b) {
    for (std::size_t at = 0; at < a.size(); at += kBlockValues) {
      const std::size_t n = std::min(kBlockValues, a.size() - at);
      CompareBlock(at, a.subspan(at, n), b.subspan(at, n));
    }
    if (mComparison.mNumDiffering != 0) mComparison.mDifference = mLargest;
  }

 private:
  void CompareBlock(std::size_t start, Elements a, Elements b) {
    const BlockDifference difference = FindDifference<T>(a.data(), b.data(), a.size());
    if (difference.mNumDiffering == 0) return;
    const bool isPlain = mTolerance == nullptr && !difference.mHasNaN &&
                         mComparison.mNumDiffering != 0 && difference.mLargest <= mLargest;
    if (isPlain) {
      mComparison.mNumDiffering += difference.mNumDiffering;
      return;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
      if (a[i] != b[i]) CompareElement(start + i, a[i], b[i]);
    }
  }

  void CompareElement(std::size_t position, std::uint32_t a, std::uint32_t b) {
    const bool isAccepted = mTolerance != nullptr &&
                            mTolerance->Accepts(std::bit_cast<float>(a), std::bit_cast<float>(b));
    if (isAccepted) return;
    const double distance = Distance(Number(a), Number(b));
    if (mComparison.mNumDiffering++ != 0 && !IsLarger(distance, mLargest)) return;
    mComparison.mPosition = position;
    mComparison.mBitsA = a;
    mComparison.mBitsB = b;
    mLargest = distance;
  }

  static double Number(std::uint32_t bits) { return static_cast<double>(std::bit_cast<T>(bits)); }

  const Tolerance* mTolerance;
  ValueComparison& mComparison;
  double mLargest = 0.0;
};

}  // namespace

ValueComparison CompareValues(const std::vector<std::uint32_t>& a,
                              const std::vector<std::uint32_t>& b, bool integers,
                              const Tolerance* tolerance) {
  QOV_ASSERT(a.size() == b.size());
  ValueComparison comparison;
  comparison.mNumValues = a.size();
  comparison.mIntegers = integers;
  integers ? ElementComparison<std::uint32_t>(tolerance, comparison).Compare(a, b)
           : ElementComparison<float>(tolerance, comparison).Compare(a, b);
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
