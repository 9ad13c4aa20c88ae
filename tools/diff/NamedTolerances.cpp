#include "diff/NamedTolerances.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string_view>

#include "ErrorText.h"
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

std::vector<NamedTolerance> ReadNamedTolerances(const std::string& path) {
  constexpr const char* kSource = "tools/diff/NamedTolerances";
  constexpr std::size_t kMostBytes = 1U << 20;
  std::ifstream file(path, std::ios::binary);
  std::string text(kMostBytes + 1, '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (file.bad() || !file.eof()) {
    Util::Raise(kSource, Util::Exception::ErrorType::ReadError,
                fmt::format("cannot read tolerances from \"{}\": {}", path,
                            file.gcount() > 0 ? "it is longer than 1 MiB" : std::strerror(errno)));
  }
  text.resize(static_cast<std::size_t>(file.gcount()));
  std::vector<NamedTolerance> tolerances;
  std::istringstream lines(text);
  std::size_t number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    if (line.ends_with('\r')) line.pop_back();
    if (line.empty() || line.starts_with('#')) continue;
    try {
      tolerances.push_back(ParseNamedTolerance(line));
    } catch (const std::exception& error) {
      Util::Raise(kSource, Util::Exception::ErrorType::MiscellaneousError,
                  fmt::format("{}, line {}: {}", path, number, ErrorText(error)));
    }
    tolerances.back().mIsFromFile = true;
  }
  return tolerances;
}

const Tolerance* Tolerances::Find(const std::string& name) const {
  const auto fits = [&name](const NamedTolerance& named) {
    return MatchesResult(name, named.mPattern);
  };
  const auto found = std::find_if(mNamed.rbegin(), mNamed.rend(), fits);
  if (found != mNamed.rend()) return &found->mTolerance;
  return mDefault ? &*mDefault : nullptr;
}

std::vector<const NamedTolerance*> Tolerances::FindUnused(
    const std::set<std::string>& names) const {
  std::vector<const NamedTolerance*> unused;
  for (const NamedTolerance& named : mNamed) {
    const bool isUsed = std::any_of(names.begin(), names.end(), [&](const std::string& name) {
      return MatchesResult(name, named.mPattern);
    });
    if (!isUsed) unused.push_back(&named);
  }
  return unused;
}

}  // namespace Qov::Tools
