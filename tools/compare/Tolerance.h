#pragma once

#include <cstdint>

namespace Qov::Tools {

/// Limits within which two floats count as equal. One limit that holds is enough. Under any
/// tolerance all NaNs are equal, and so are the two zeros.
struct Tolerance {
  double mAbsolute = 0.0;
  double mRelative = 0.0;   ///< Factor of the larger of the two magnitudes.
  std::uint32_t mUlps = 0;  ///< Steps from one float to the next.

  bool Accepts(float a, float b) const;
};

}  // namespace Qov::Tools
