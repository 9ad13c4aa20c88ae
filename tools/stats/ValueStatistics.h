#pragma once

#include <cmath>
#include <cstdint>

#include "ArrayStatistics.h"

namespace Qov::Tools {

/// A sum of many numbers whose rounding error does not grow with their count: the errors of the
/// additions are summed separately (Neumaier).
class CompensatedSum {
 public:
  void Add(double value);
  void Add(const CompensatedSum& other);
  double Get() const;

 private:
  double mSum = 0.0;
  double mErrors = 0.0;
};

/// Range, mean and root mean square of values of 4 bytes, or of the lengths of such vectors. Their
/// squares, and the sum of them, cannot exceed a double.
class ValueStatistics {
 public:
  /// Adds a value that belongs to an item of the array.
  void Add(double value, std::uint64_t item);

  /// Whether another array has a new least or greatest value.
  struct Replaced {
    bool mLeast = false;
    bool mGreatest = false;
  };
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

  ArrayStatistics mRange;
  std::uint64_t mLeastItem = 0;
  std::uint64_t mGreatestItem = 0;
  CompensatedSum mSum;
  CompensatedSum mSquares;
};

// Inline, because they are called for each value.

inline void CompensatedSum::Add(double value) {
  const double sum = mSum + value;
  mErrors += std::fabs(mSum) >= std::fabs(value) ? (mSum - sum) + value : (value - sum) + mSum;
  mSum = sum;
}

inline void ValueStatistics::Add(double value, std::uint64_t item) {
  const bool isFirst = !mRange.HasRange();
  if (isFirst || value < mRange.mMinimum) mLeastItem = item;
  if (isFirst || value > mRange.mMaximum) mGreatestItem = item;
  mRange.Add(value);
  if (std::isnan(value)) return;
  mSum.Add(value);
  mSquares.Add(value * value);
}

}  // namespace Qov::Tools
