#include "ValueKernels.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

// The functions are compiled for several processors, and the program chooses when it starts. That
// needs indirect functions, which are resolved before a sanitizer can run.
#if defined(__x86_64__) && defined(__GLIBC__) && defined(__GNUC__) && !defined(__clang__) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define QOV_CLONED __attribute__((target_clones("avx2", "default")))
#else
#define QOV_CLONED
#endif
/// A function that is compiled as part of each clone.
#define QOV_IN_CLONE __attribute__((always_inline)) inline

namespace Qov::Tools {
namespace {

/// Vectors of the compiler. Every processor has registers of this size, or uses scalars.
template <class T>
using Register [[gnu::vector_size(16)]] = T;

template <class T>
QOV_IN_CLONE ValueRange<T> FindRangeOf(const T* values, std::size_t count) {
  using Values = Register<T>;
  using Counts = decltype(Values{} < Values{});
  constexpr std::size_t kRegisterValues = sizeof(Values) / sizeof(T);
  constexpr std::size_t kRegisters = 4;
  using Limits = std::numeric_limits<T>;
  ValueRange<T> range{Limits::has_infinity ? Limits::infinity() : Limits::max(),
                      Limits::has_infinity ? -Limits::infinity() : Limits::lowest(), 0};
  // NOLINTBEGIN(modernize-avoid-c-arrays): std::array drops attributes of its elements
  Values least[kRegisters];
  Values greatest[kRegisters];
  Counts numNaN[kRegisters];
  // NOLINTEND(modernize-avoid-c-arrays)
  for (std::size_t r = 0; r < kRegisters; ++r) {
    least[r] = Values{} + range.mLeast;
    greatest[r] = Values{} + range.mGreatest;
    numNaN[r] = Counts{};
  }
  std::size_t i = 0;
  for (; i + kRegisters * kRegisterValues <= count; i += kRegisters * kRegisterValues) {
    for (std::size_t r = 0; r < kRegisters; ++r) {
      Values value;
      std::memcpy(&value, values + i + kRegisterValues * r, sizeof(value));
      least[r] = value < least[r] ? value : least[r];
      greatest[r] = value > greatest[r] ? value : greatest[r];
      numNaN[r] -= value != value;  // true is -1
    }
  }
  for (; i < count; ++i) {
    if (values[i] < range.mLeast) range.mLeast = values[i];
    if (values[i] > range.mGreatest) range.mGreatest = values[i];
    if (values[i] != values[i]) ++range.mNumNaN;
  }
  for (std::size_t r = 0; r < kRegisters; ++r) {
    for (std::size_t k = 0; k < kRegisterValues; ++k) {
      if (least[r][k] < range.mLeast) range.mLeast = least[r][k];
      if (greatest[r][k] > range.mGreatest) range.mGreatest = greatest[r][k];
      range.mNumNaN += static_cast<std::size_t>(numNaN[r][k]);
    }
  }
  return range;
}

/// The sums of each lane begin at a number that exceeds all of them, so that the sum is always the
/// greater summand and its error is exactly value - (after - before). In the end that number is
/// subtracted without an error, because the sum is still between a half and twice of it.
template <class T>
QOV_IN_CLONE LaneSums SumLanesOf(const T* values, std::size_t count, double largest) {
  constexpr double kStart = 2.0 * kBlockValues / kLanes;
  const double start = kStart * largest;
  const double startOfSquares = start * largest;
  LaneSums lanes{};
  lanes.mSums.fill(start);
  lanes.mSquares.fill(startOfSquares);
  LaneSums::Lanes sums = lanes.mSums;
  LaneSums::Lanes errors{};
  LaneSums::Lanes squares = lanes.mSquares;
  LaneSums::Lanes squareErrors{};
  for (std::size_t i = 0; i < count; i += kLanes) {
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      const auto value = static_cast<double>(values[i + lane]);
      const double sum = sums[lane] + value;
      errors[lane] += value - (sum - sums[lane]);
      sums[lane] = sum;
      const double square = value * value;
      const double sumOfSquares = squares[lane] + square;
      squareErrors[lane] += square - (sumOfSquares - squares[lane]);
      squares[lane] = sumOfSquares;
    }
  }
  for (std::size_t lane = 0; lane < kLanes; ++lane) {
    lanes.mSums[lane] = sums[lane] - start;
    lanes.mErrors[lane] = errors[lane];
    lanes.mSquares[lane] = squares[lane] - startOfSquares;
    lanes.mSquareErrors[lane] = squareErrors[lane];
  }
  return lanes;
}

template <class T>
QOV_IN_CLONE void SplitVectorsOf(const T* vectors, std::size_t count, VectorBlock<T>& block) {
  T* const x = block.mComponents[0].data();
  T* const y = block.mComponents[1].data();
  T* const z = block.mComponents[2].data();
  for (std::size_t i = 0; i < count; ++i) {
    x[i] = vectors[3 * i];
    y[i] = vectors[3 * i + 1];
    z[i] = vectors[3 * i + 2];
  }
  for (std::size_t i = 0; i < count; ++i) {
    const auto a = static_cast<double>(x[i]);
    const auto b = static_cast<double>(y[i]);
    const auto c = static_cast<double>(z[i]);
    block.mMagnitudes[i] = std::sqrt(a * a + b * b + c * c);
  }
}

template <class T>
QOV_IN_CLONE double GetDistance(std::uint32_t a, std::uint32_t b) {
  return std::fabs(static_cast<double>(std::bit_cast<T>(a)) -
                   static_cast<double>(std::bit_cast<T>(b)));
}

template <class T>
QOV_IN_CLONE BlockDifference FindDifferenceOf(const std::uint32_t* a, const std::uint32_t* b,
                                              std::size_t count) {
  std::array<std::uint32_t, kLanes> numDiffering{};
  std::array<std::uint32_t, kLanes> hasNaN{};
  std::array<double, kLanes> largest{};
  std::size_t i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    for (std::size_t k = 0; k < kLanes; ++k) {
      const double distance = GetDistance<T>(a[i + k], b[i + k]);
      numDiffering[k] += a[i + k] != b[i + k] ? 1 : 0;
      hasNaN[k] |= distance != distance ? 1 : 0;
      largest[k] = distance > largest[k] ? distance : largest[k];
    }
  }
  BlockDifference difference{0, 0, false};
  const auto add = [&difference](std::uint32_t differing, bool isNaN, double distance) {
    difference.mNumDiffering += differing;
    difference.mHasNaN = difference.mHasNaN || isNaN;
    if (distance > difference.mLargest) difference.mLargest = distance;
  };
  for (std::size_t k = 0; k < kLanes; ++k) add(numDiffering[k], hasNaN[k] != 0, largest[k]);
  for (; i < count; ++i) {
    const double distance = GetDistance<T>(a[i], b[i]);
    add(a[i] != b[i] ? 1 : 0, distance != distance, distance);
  }
  return difference;
}

}  // namespace

QOV_CLONED ValueRange<float> FindRange(const float* values, std::size_t count) {
  return FindRangeOf(values, count);
}

QOV_CLONED ValueRange<double> FindRange(const double* values, std::size_t count) {
  return FindRangeOf(values, count);
}

QOV_CLONED ValueRange<std::uint32_t> FindRange(const std::uint32_t* values, std::size_t count) {
  return FindRangeOf(values, count);
}

QOV_CLONED LaneSums SumLanes(const float* values, std::size_t count, double largest) {
  return SumLanesOf(values, count, largest);
}

QOV_CLONED LaneSums SumLanes(const double* values, std::size_t count, double largest) {
  return SumLanesOf(values, count, largest);
}

QOV_CLONED LaneSums SumLanes(const std::uint32_t* values, std::size_t count, double largest) {
  return SumLanesOf(values, count, largest);
}

QOV_CLONED void SplitVectors(const float* vectors, std::size_t count, VectorBlock<float>& block) {
  SplitVectorsOf(vectors, count, block);
}

QOV_CLONED void SplitVectors(const std::uint32_t* vectors, std::size_t count,
                             VectorBlock<std::uint32_t>& block) {
  SplitVectorsOf(vectors, count, block);
}

template <>
QOV_CLONED BlockDifference FindDifference<float>(const std::uint32_t* a, const std::uint32_t* b,
                                                 std::size_t count) {
  return FindDifferenceOf<float>(a, b, count);
}
template <>
QOV_CLONED BlockDifference FindDifference<std::uint32_t>(const std::uint32_t* a,
                                                         const std::uint32_t* b,
                                                         std::size_t count) {
  return FindDifferenceOf<std::uint32_t>(a, b, count);
}

}  // namespace Qov::Tools
