#pragma once

#include <cstdint>
#include <string>

#include "Qov/Ryx/NumericArray.h"
#include "diff/Tolerance.h"

namespace Qov::Tools {

/// How the values of two arrays of the same number of elements differ.
struct ValueComparison {
  std::uint64_t mNumValues = 0;
  std::uint64_t mNumDiffering = 0;
  /// Of all that differ, the first of the largest difference: its position among the elements,
  /// the values' bits, and how far they are apart. A NaN is farther from a number than anything.
  std::uint64_t mPosition = 0;
  std::uint32_t mBitsA = 0;
  std::uint32_t mBitsB = 0;
  double mDifference = 0.0;
  bool mIntegers = false;
  std::string mTrouble;  ///< Why they cannot be compared, not escaped; empty if they could.

  bool IsEqual() const { return mNumDiffering == 0 && mTrouble.empty(); }
};

/// Reads both arrays, and compares floats by the tolerance if there is one, everything else bit
/// for bit.
ValueComparison CompareValues(const QovRyx::NumericArray& a, const QovRyx::NumericArray& b,
                              bool integers, const Tolerance* tolerance);

/// An element as a short text; of a NaN with its bits.
std::string ElementText(std::uint32_t bits, bool integer);

}  // namespace Qov::Tools
