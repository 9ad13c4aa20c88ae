#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// Loops over many values, for statistics and comparisons of arrays. Their results are the same on
/// every processor.
namespace Qov::Tools {

/// The greatest number of values that are summed at a time.
inline constexpr std::size_t kBlockValues = 1024;
/// Values that are added side by side, each to a sum of its own.
inline constexpr std::size_t kLanes = 4;

/// Range of values that are numbers, including infinities. Undefined if all of them are NaNs.
template <class T>
struct ValueRange {
  T mLeast;
  T mGreatest;
  std::size_t mNumNaN;
};

/// Returns the range of values. If an extreme is zero, its sign is undefined.
ValueRange<float> FindRange(const float* values, std::size_t count);
ValueRange<double> FindRange(const double* values, std::size_t count);
ValueRange<std::uint32_t> FindRange(const std::uint32_t* values, std::size_t count);

/// Sums of the values of each lane and of their squares, and of the errors of these additions.
struct LaneSums {
  using Lanes = std::array<double, kLanes>;
  Lanes mSums;
  Lanes mErrors;
  Lanes mSquares;
  Lanes mSquareErrors;
};

/// Sums values that are finite and whose magnitudes do not exceed `largest`. `count` is a multiple
/// of kLanes and at most kBlockValues.
LaneSums SumLanes(const float* values, std::size_t count, double largest);
LaneSums SumLanes(const double* values, std::size_t count, double largest);
LaneSums SumLanes(const std::uint32_t* values, std::size_t count, double largest);

/// The differences of elements.
struct BlockDifference {
  std::size_t mNumDiffering;  ///< Elements with different bits.
  double mLargest;            ///< The largest distance of two numbers that have one.
  bool mHasNaN;               ///< True if two elements have no distance: a NaN, equal infinities.
};

/// Compares elements, which have the type T.
template <class T>
BlockDifference FindDifference(const std::uint32_t* a, const std::uint32_t* b, std::size_t count);
template <>
BlockDifference FindDifference<float>(const std::uint32_t* a, const std::uint32_t* b,
                                      std::size_t count);
template <>
BlockDifference FindDifference<std::uint32_t>(const std::uint32_t* a, const std::uint32_t* b,
                                              std::size_t count);

/// The components of at most kBlockValues vectors, and their lengths.
template <class T>
struct VectorBlock {
  std::array<std::array<T, kBlockValues>, 3> mComponents;
  std::array<double, kBlockValues> mMagnitudes;
};

/// Fills the block from `count` vectors of three values.
void SplitVectors(const float* vectors, std::size_t count, VectorBlock<float>& block);
void SplitVectors(const std::uint32_t* vectors, std::size_t count,
                  VectorBlock<std::uint32_t>& block);

}  // namespace Qov::Tools
