#include "LoadLimit.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <optional>

#include "SystemResources.h"

namespace QovJbf {
namespace {

/// Returns the free memory, measured at most a second ago, because measuring reads dozens of files.
std::uint64_t GetRecentFreeMemory() {
  using Clock = std::chrono::steady_clock;
  static thread_local std::optional<Clock::time_point> measured;
  static thread_local std::uint64_t free = 0;
  const Clock::time_point now = Clock::now();
  if (!measured || now - *measured > std::chrono::seconds(1)) {
    free = SystemResources().GetFreeMemory();
    measured = now;
  }
  return free;
}

}  // namespace

std::uint64_t GetLoadLimit() {
  constexpr std::uint64_t kLeast = std::uint64_t{1} << 30;
  constexpr std::uint64_t kShare = 8;
  const char* text = std::getenv("RYXMERGE_LOAD_LIMIT");
  const std::uint64_t number = text == nullptr ? 0 : std::strtoull(text, nullptr, 10);
  if (number != 0) return number;
  return std::max(kLeast, GetRecentFreeMemory() / kShare);
}

std::string DescribeLoadLimit(const std::string& content, std::uint64_t numBytes,
                              std::uint64_t limit) {
  return content + " decompress to " + std::to_string(numBytes) + " bytes (limit " +
         std::to_string(limit) + " bytes; RYXMERGE_LOAD_LIMIT sets another)";
}

}  // namespace QovJbf
