#include "Qov/Jbf/LoadLimit.h"

#include <algorithm>
#include <cstdlib>

#include "ThreadCount.h"

namespace QovJbf {

std::uint64_t GetLoadLimit() {
  constexpr std::uint64_t kLeast = std::uint64_t{1} << 30;
  constexpr std::uint64_t kShare = 8;
  const char* text = std::getenv("RYXMERGE_LOAD_LIMIT");
  const std::uint64_t number = text == nullptr ? 0 : std::strtoull(text, nullptr, 10);
  if (number != 0) return number;
  return std::max(kLeast, MachineShare().GetFreeMemory() / kShare);
}

std::string DescribeLoadLimit(const std::string& content, std::uint64_t numBytes,
                              std::uint64_t limit) {
  return content + " decompress to " + std::to_string(numBytes) + " bytes (limit " +
         std::to_string(limit) + " bytes; RYXMERGE_LOAD_LIMIT sets another)";
}

}  // namespace QovJbf
