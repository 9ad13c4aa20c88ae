#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace Qov::Tools {

/// Result of one pass over an array. A double represents every 4-byte element exactly.
struct ArrayStatistics {
  std::uint64_t mNumValues = 0;
  std::uint64_t mNumNaN = 0;
  /// Range of the values that are numbers, including infinities; undefined if there are none. If
  /// several values are equal, such as 0 and -0, the first one.
  double mMinimum = std::numeric_limits<double>::infinity();
  double mMaximum = -std::numeric_limits<double>::infinity();

  bool HasRange() const { return mNumNaN < mNumValues; }

  /// Whether other values have a new least or greatest value.
  struct Replaced {
    bool mLeast = false;
    bool mGreatest = false;
  };
  /// Adds values that come after these.
  Replaced Add(const ArrayStatistics& other);
};

/// Summarizes values of type uint32_t, float or double.
template <class T>
ArrayStatistics Summarize(const T* values, std::size_t count);

template <class T>
ArrayStatistics Summarize(const std::vector<T>& values) {
  return Summarize(values.data(), values.size());
}

}  // namespace Qov::Tools
