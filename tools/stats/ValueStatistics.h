#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "ArrayStatistics.h"

namespace Qov::Tools {

/// A sum of many numbers whose rounding error does not grow with their count: the errors of the
/// additions are summed separately (Neumaier).
class CompensatedSum {
 public:
  void Add(double value);
  void Add(const CompensatedSum& other);
  /// Adds a sum whose error is known.
  void Add(double sum, double error);
  double Get() const;

 private:
  double mSum = 0.0;
  double mErrors = 0.0;
};

/// Range, mean and root mean square of values of 4 bytes, or of the lengths of such vectors. Their
/// squares, and the sum of them, cannot exceed a double.
class ValueStatistics {
 public:
  /// Adds at most kBlockValues values of type uint32_t, float or double. The first belongs to
  /// `item`, each other one to the next item.
  template <class T>
  void Add(const T* values, std::size_t count, std::uint64_t item);

  using Replaced = ArrayStatistics::Replaced;
  /// Adds the values of another array.
  Replaced Add(const ValueStatistics& other);

  const ArrayStatistics& GetRange() const { return mRange; }
  /// Returns the first item with the least, or greatest, value.
  std::uint64_t GetLeastItem() const { return mLeastItem; }
  std::uint64_t GetGreatestItem() const { return mGreatestItem; }
  /// Returns the mean of the values that are numbers. There must be one. The mean of both
  /// infinities is NaN.
  double GetMean() const;
  /// Returns the root mean square of them.
  double GetRootMeanSquare() const;

 private:
  double CountNumbers() const;
  template <class T>
  void AddNumbers(const T* numbers, std::size_t count, double largest);

  ArrayStatistics mRange;
  std::uint64_t mLeastItem = 0;
  std::uint64_t mGreatestItem = 0;
  CompensatedSum mSum;
  CompensatedSum mSquares;
};

/// Returns the statistics of each component of an array of tuples, and after them those of the
/// lengths of vectors of three elements. T is uint32_t or float.
template <class T>
std::vector<ValueStatistics> SummarizeComponents(const std::vector<T>& values,
                                                 std::size_t numComponents);

// Inline, because it is called for each value.

inline void CompensatedSum::Add(double value) {
  const double sum = mSum + value;
  mErrors += std::fabs(mSum) >= std::fabs(value) ? (mSum - sum) + value : (value - sum) + mSum;
  mSum = sum;
}

}  // namespace Qov::Tools
