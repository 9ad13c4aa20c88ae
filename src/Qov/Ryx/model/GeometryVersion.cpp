#include "GeometryVersion.h"

#include <charconv>
#include <optional>
#include <string_view>
#include <utility>

namespace QovRyx {
namespace {

using Numbers = std::pair<unsigned, unsigned>;

/// Returns the number at `begin` and moves `begin` past it. Returns the highest value for a number
/// that is too large.
std::optional<unsigned> TakeNumber(const char*& begin, const char* end) {
  unsigned number = 0;
  const auto [rest, error] = std::from_chars(begin, end, number);
  if (rest == begin) return std::nullopt;
  begin = rest;
  return error == std::errc() ? number : ~0U;
}

std::optional<Numbers> ParseVersion(std::string_view version) {
  const char* at = version.data();
  const char* end = at + version.size();
  const auto first = TakeNumber(at, end);
  if (!first || at == end || *at != '.') return std::nullopt;
  const auto second = TakeNumber(++at, end);
  if (!second) return std::nullopt;
  return Numbers(*first, *second);
}

}  // namespace

bool IsNewerVersion(const std::string& version, const std::string& known) {
  const auto numbers = ParseVersion(version);
  return numbers && *numbers > *ParseVersion(known);
}

bool IsNewerGeometryVersion(const std::string& version) {
  return IsNewerVersion(version, kNewestGeometryVersion);
}

}  // namespace QovRyx
