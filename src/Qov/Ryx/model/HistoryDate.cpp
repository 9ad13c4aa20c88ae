#include "HistoryDate.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>

#include "Qov/Util/Raise.h"

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/Tree";
constexpr const char* kVariable = "SOURCE_DATE_EPOCH";
/// The last second of the year 9999, in seconds since 1970.
constexpr std::uint64_t kLatest = 253402300799;

constexpr std::array kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

std::time_t ParseSeconds(std::string_view text) {
  std::uint64_t seconds = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (error == std::errc() && stop == text.data() + text.size() && seconds <= kLatest) {
    return static_cast<std::time_t>(seconds);
  }
  Qov::Util::Raise(kSource, Qov::Util::Exception::ErrorType::MiscellaneousError,
                   std::string(kVariable) + " is not a number of seconds since 1970, at most " +
                       std::to_string(kLatest) + ": correct or unset it");
}

std::string Format(const std::tm& time, const char* zone) {
  std::array<char, 120> text{};
  std::snprintf(text.data(), text.size(), "%s %s %02d %02d:%02d:%02d %d %s",
                kDays[static_cast<std::size_t>(time.tm_wday)],
                kMonths[static_cast<std::size_t>(time.tm_mon)], time.tm_mday, time.tm_hour,
                time.tm_min, time.tm_sec, time.tm_year + 1900, zone);
  return text.data();
}

}  // namespace

std::string FormatHistoryDate() {
  const char* fixed = std::getenv(kVariable);
  std::tm fields{};
  if (fixed != nullptr && *fixed != '\0') {
    const std::time_t time = ParseSeconds(fixed);
    return gmtime_r(&time, &fields) == nullptr ? std::string() : Format(fields, "UTC");
  }
  const std::time_t now = std::time(nullptr);
  return localtime_r(&now, &fields) == nullptr ? std::string() : Format(fields, fields.tm_zone);
}

}  // namespace QovRyx
