#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Qov::Tools {

/// Norms of the difference of two arrays.
struct ValueNorms {
  double mLargest = 0.0;          ///< The largest absolute difference of two elements.
  double mL2 = 0.0;               ///< The square root of the sum of the squared differences.
  double mRelativeL2 = 0.0;       ///< mL2 divided by the same norm of A; infinite if that is 0.
  std::uint64_t mNumLeftOut = 0;  ///< Pairs left out, because one of the values is not finite.
};

/// Computes the norms of two arrays of the same length.
ValueNorms ComputeNorms(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b,
                        bool integers);

/// Returns "max 1, L2 5, relative L2 0.25".
std::string NormsText(const ValueNorms& norms);

}  // namespace Qov::Tools
