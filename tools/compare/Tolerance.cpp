#include "compare/Tolerance.h"

#include <bit>
#include <cmath>
#include <cstdlib>

namespace Qov::Tools {
namespace {

/// Maps floats in ascending order to integers in ascending order.
std::int64_t Rank(float value) {
  const auto bits = std::bit_cast<std::uint32_t>(value);
  const std::int64_t magnitude = bits & 0x7FFFFFFFU;
  return (bits >> 31) != 0 ? -magnitude : magnitude;
}

}  // namespace

bool Tolerance::Accepts(float a, float b) const {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  if (a == b) return true;
  if (!std::isfinite(a) || !std::isfinite(b)) return false;
  const double difference = std::fabs(static_cast<double>(a) - static_cast<double>(b));
  const double larger =
      std::fmax(std::fabs(static_cast<double>(a)), std::fabs(static_cast<double>(b)));
  return difference <= mAbsolute || difference <= mRelative * larger ||
         std::abs(Rank(a) - Rank(b)) <= mUlps;
}

}  // namespace Qov::Tools
