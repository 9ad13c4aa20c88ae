#include "diff/Tolerance.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <string_view>

#include "NodeFilter.h"
#include "Qov/Util/Raise.h"

namespace Qov::Tools {
namespace {

/// Floats in ascending order as integers in ascending order.
std::int64_t Rank(float value) {
  const auto bits = std::bit_cast<std::uint32_t>(value);
  const std::int64_t magnitude = bits & 0x7FFFFFFFU;
  return (bits >> 31) != 0 ? -magnitude : magnitude;
}

template <class T>
bool ParseNumber(std::string_view text, T& value) {
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && rest == end;
}

bool ParseLimit(std::string_view text, Tolerance& tolerance) {
  const std::string_view value = text.substr(std::min(text.size(), std::size_t{4}));
  if (text.starts_with("abs=")) return ParseNumber(value, tolerance.mAbsolute);
  if (text.starts_with("rel=")) return ParseNumber(value, tolerance.mRelative);
  return text.starts_with("ulp=") && ParseNumber(value, tolerance.mUlps);
}

bool ParseLimits(std::string_view text, Tolerance& tolerance) {
  while (true) {
    const std::size_t comma = text.find(',');
    if (!ParseLimit(text.substr(0, comma), tolerance)) return false;
    if (comma == text.npos) return tolerance.mAbsolute >= 0 && tolerance.mRelative >= 0;
    text.remove_prefix(comma + 1);
  }
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

NamedTolerance ParseNamedTolerance(const std::string& text) {
  NamedTolerance named;
  const std::size_t colon = text.rfind(':');
  if (colon == 0 || colon == text.npos ||
      !ParseLimits(std::string_view(text).substr(colon + 1), named.mTolerance)) {
    Util::Raise("tools/diff/Tolerance", Util::Exception::ErrorType::MiscellaneousError,
                fmt::format("\"{}\" should look like PATTERN:abs=X,rel=X,ulp=N", text));
  }
  named.mPattern = text.substr(0, colon);
  return named;
}

const Tolerance* Tolerances::Find(const std::string& name) const {
  const auto fits = [&name](const NamedTolerance& named) {
    return MatchesPattern(name, named.mPattern);
  };
  const auto found = std::find_if(mNamed.rbegin(), mNamed.rend(), fits);
  if (found != mNamed.rend()) return &found->mTolerance;
  return mDefault ? &*mDefault : nullptr;
}

}  // namespace Qov::Tools
