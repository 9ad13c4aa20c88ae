#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace Qov::Tools {

/// Result of one pass over an array. A double represents every 4-byte element exactly.
struct ArrayStatistics {
  std::uint64_t mNumValues = 0;
  std::uint64_t mNumNaN = 0;
  /// Range of the values that are numbers, including infinities; undefined if there are none.
  double mMinimum = std::numeric_limits<double>::infinity();
  double mMaximum = -std::numeric_limits<double>::infinity();

  bool HasRange() const { return mNumNaN < mNumValues; }

  void Add(double value) {
    ++mNumValues;
    if (std::isnan(value)) {
      ++mNumNaN;
      return;
    }
    if (value < mMinimum) mMinimum = value;
    if (value > mMaximum) mMaximum = value;
  }
};

/// Summarizes values of type uint32_t or float.
template <class T>
ArrayStatistics Summarize(const std::vector<T>& values) {
  ArrayStatistics statistics;
  for (const T value : values) statistics.Add(static_cast<double>(value));
  return statistics;
}

}  // namespace Qov::Tools
