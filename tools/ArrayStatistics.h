#pragma once

#include <cstdint>
#include <vector>

namespace Qov::Tools {

/// What one pass over an array tells. Every element of 4 bytes fits a double.
struct ArrayStatistics {
  std::uint64_t mNumValues = 0;
  std::uint64_t mNumNaN = 0;
  /// Of the values that are numbers, infinities among them; without meaning if there are none.
  double mMinimum = 0.0;
  double mMaximum = 0.0;

  bool HasRange() const { return mNumNaN < mNumValues; }
};

/// T is uint32_t or float.
template <class T>
ArrayStatistics Summarize(const std::vector<T>& values);

extern template ArrayStatistics Summarize(const std::vector<std::uint32_t>&);
extern template ArrayStatistics Summarize(const std::vector<float>&);

}  // namespace Qov::Tools
