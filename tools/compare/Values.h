#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "compare/Tolerance.h"

namespace Qov::Tools {

/// Differences between the elements of two arrays of the same length.
struct ValueComparison {
  std::uint64_t mNumValues = 0;
  std::uint64_t mNumDiffering = 0;
  /// The first of the largest differences: its position among the elements, the bits of both
  /// values, and their distance. A NaN is farther from a number than any other number.
  std::uint64_t mPosition = 0;
  std::uint32_t mBitsA = 0;
  std::uint32_t mBitsB = 0;
  double mDifference = 0.0;
  bool mIntegers = false;

  bool IsEqual() const { return mNumDiffering == 0; }
};

/// Compares floats by the tolerance if there is one, everything else bit for bit. Both arrays must
/// have the same length.
ValueComparison CompareValues(const std::vector<std::uint32_t>& a,
                              const std::vector<std::uint32_t>& b, bool integers,
                              const Tolerance* tolerance);

/// Returns the position of the item with the largest difference, for items of `width` elements.
std::uint64_t GetItem(const ValueComparison& comparison, std::uint8_t width);

/// Returns "3 of 40 values differ, most at item 5, component 1", for items of `width` elements.
std::string DescribeDifference(const ValueComparison& comparison, std::uint8_t width);
/// Returns the same with another name of the item, such as "node 4711".
std::string DescribeDifference(const ValueComparison& comparison, std::uint8_t width,
                               const std::string& item);

/// Returns an element as a short text; a NaN with its bits.
std::string ElementText(std::uint32_t bits, bool integer);

}  // namespace Qov::Tools
