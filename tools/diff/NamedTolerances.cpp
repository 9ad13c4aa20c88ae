#include "diff/NamedTolerances.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

#include "Qov/Util/Raise.h"
#include "ResultPattern.h"

namespace Qov::Tools {
namespace {

template <class T>
bool ParseNumber(std::string_view text, T& value) {
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && rest == end;
}

bool ParseLimit(std::string_view text, Tolerance& tolerance) {
  const std::string_view value = text.substr(std::min(text.size(), std::size_t{4}));
  if (text.starts_with("abs=")) return ParseMagnitude(value, tolerance.mAbsolute);
  if (text.starts_with("rel=")) return ParseMagnitude(value, tolerance.mRelative);
  return text.starts_with("ulp=") && ParseNumber(value, tolerance.mUlps);
}

bool ParseLimits(std::string_view text, Tolerance& tolerance) {
  while (true) {
    const std::size_t comma = text.find(',');
    if (!ParseLimit(text.substr(0, comma), tolerance)) return false;
    if (comma == text.npos) return true;
    text.remove_prefix(comma + 1);
  }
}

}  // namespace

bool ParseMagnitude(std::string_view text, double& value) {
  return ParseNumber(text, value) && std::isfinite(value) && !std::signbit(value);
}

NamedTolerance ParseNamedTolerance(const std::string& text) {
  NamedTolerance named;
  const std::size_t colon = text.rfind(':');
  if (colon == 0 || colon == text.npos ||
      !ParseLimits(std::string_view(text).substr(colon + 1), named.mTolerance)) {
    Util::Raise("tools/diff/NamedTolerances", Util::Exception::ErrorType::MiscellaneousError,
                fmt::format("\"{}\" should look like PATTERN:abs=X,rel=X,ulp=N, with numbers that "
                            "are finite and not negative",
                            text));
  }
  named.mPattern = text.substr(0, colon);
  return named;
}

const Tolerance* Tolerances::Find(const std::string& name) const {
  const auto fits = [&name](const NamedTolerance& named) {
    return MatchesResult(name, named.mPattern);
  };
  const auto found = std::find_if(mNamed.rbegin(), mNamed.rend(), fits);
  if (found != mNamed.rend()) return &found->mTolerance;
  return mDefault ? &*mDefault : nullptr;
}

const std::string* Tolerances::FindUnused(const std::set<std::string>& names) const {
  for (const NamedTolerance& named : mNamed) {
    const bool isUsed = std::any_of(names.begin(), names.end(), [&](const std::string& name) {
      return MatchesResult(name, named.mPattern);
    });
    if (!isUsed) return &named.mPattern;
  }
  return nullptr;
}

}  // namespace Qov::Tools
