#pragma once

#include <cstdint>
#include <vector>

namespace Qov::Tools {

/// Result of one pass over an array. A double represents every 4-byte element exactly.
struct ArrayStatistics {
  std::uint64_t mNumValues = 0;
  std::uint64_t mNumNaN = 0;
  /// Range of the values that are numbers, including infinities; undefined if there are none.
  double mMinimum = 0.0;
  double mMaximum = 0.0;

  bool HasRange() const { return mNumNaN < mNumValues; }
};

/// Summarizes values of type uint32_t or float.
template <class T>
ArrayStatistics Summarize(const std::vector<T>& values);

extern template ArrayStatistics Summarize(const std::vector<std::uint32_t>&);
extern template ArrayStatistics Summarize(const std::vector<float>&);

}  // namespace Qov::Tools
