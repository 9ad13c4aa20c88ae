#include "ContainerFormat.h"

#include <algorithm>
#include <cstdlib>

#include "diagnostics/CLocale.h"

namespace QovJbf {

namespace {

constexpr std::array<std::string_view, 1> kVersionsWithoutViews{"0.1"};
constexpr std::array<std::string_view, 4> kVersionsWithoutRecordSizes{"0.1", "0.1a", "0.1b", "0.2"};

template <std::size_t N>
bool IsOneOf(std::string_view version, const std::array<std::string_view, N>& versions) {
  return std::find(versions.begin(), versions.end(), version) != versions.end();
}

}  // namespace

std::uint32_t GetVersionNumber(const std::string& version) {
  constexpr double kMaximum = 4.0e8;
  const double parsed = strtod_l(version.c_str(), nullptr, Qov::Util::GetCLocale());
  const double clamped = parsed > 0.0 ? std::min(parsed, kMaximum) : 0.0;
  return static_cast<std::uint32_t>((static_cast<float>(clamped) + 0.001) * 10.0);
}

bool HasViews(std::string_view version) { return !IsOneOf(version, kVersionsWithoutViews); }

bool HasRecordSizes(std::string_view version) {
  return !IsOneOf(version, kVersionsWithoutRecordSizes);
}

bool HasWideOffsets(const std::string& version) {
  return GetVersionNumber(version) > GetVersionNumber(kLastVersionWithNarrowOffsets);
}

}  // namespace QovJbf
