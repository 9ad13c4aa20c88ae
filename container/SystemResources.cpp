#include "SystemResources.h"

#include <sched.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <functional>
#include <limits>
#include <locale>
#include <optional>
#include <sstream>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

namespace QovJbf {

namespace {

constexpr std::uint64_t kKilobyte = 1024;
/// Groups of version 1 without a limit have one near 2^63.
constexpr std::uint64_t kNoLimit = std::uint64_t{1} << 62;

/// A file of the operating system. Its numbers are read in the C locale, because the process can
/// have set another locale.
class SystemFile : public std::ifstream {
 public:
  explicit SystemFile(const std::string& path) {
    imbue(std::locale::classic());
    open(path);
  }
};

/// Returns the number at the start of a file. Returns nothing if the file does not exist or begins
/// with other text, such as "max".
std::optional<std::uint64_t> ReadNumber(const std::string& path) {
  SystemFile file(path);
  std::int64_t number = 0;
  if (!(file >> number) || number < 0) return std::nullopt;
  return static_cast<std::uint64_t>(number);
}

/// Returns the number after `key` in a line "key number", else nothing.
std::optional<std::uint64_t> ParseEntry(const std::string& line, const char* key) {
  if (!line.starts_with(key)) return std::nullopt;
  std::istringstream rest(line.substr(std::strlen(key)));
  rest.imbue(std::locale::classic());
  std::uint64_t number = 0;
  if ((rest.peek() != ' ' && rest.peek() != '\t') || !(rest >> number)) return std::nullopt;
  return number;
}

/// Returns the numbers after `keys` in a file of lines "key number".
template <std::size_t N>
std::array<std::optional<std::uint64_t>, N> ReadEntries(const std::string& path,
                                                        const std::array<const char*, N>& keys) {
  std::array<std::optional<std::uint64_t>, N> numbers;
  SystemFile file(path);
  for (std::string line; std::getline(file, line);) {
    for (std::size_t i = 0; i < N; ++i) {
      if (!numbers[i]) numbers[i] = ParseEntry(line, keys[i]);
    }
  }
  return numbers;
}

std::optional<std::uint64_t> ReadEntry(const std::string& path, const char* key) {
  return ReadEntries<1>(path, {key})[0];
}

/// A line of /proc/self/cgroup: "hierarchy:controller,controller:path". Version 2 has one hierarchy
/// with an empty list of controllers.
struct GroupLine {
  std::string mControllers;
  std::string mPath;

  bool HasController(const std::string& controller) const {
    return ("," + mControllers + ",").find("," + controller + ",") != std::string::npos;
  }
};

std::vector<GroupLine> ReadGroupLines(const std::string& root) {
  std::vector<GroupLine> lines;
  SystemFile file(root + "/proc/self/cgroup");
  for (std::string line; std::getline(file, line);) {
    const std::size_t first = line.find(':');
    const std::size_t second = line.find(':', first + 1);
    if (first == std::string::npos || second == std::string::npos) continue;
    lines.push_back({line.substr(first + 1, second - first - 1), line.substr(second + 1)});
  }
  return lines;
}

/// Visits the folder of a group and the folders of its parents, whose limits apply as well. In a
/// container, the path can be the path of the host, and only the topmost folder exists.
void VisitGroups(const std::string& mount, std::string path,
                 const std::function<void(const std::string&)>& visit) {
  while (true) {
    while (!path.empty() && path.back() == '/') path.pop_back();
    visit(mount + path);
    if (path.empty()) return;
    path.erase(path.rfind('/'));
  }
}

/// Visits the folders that can hold limits of `controller`.
void VisitGroupsOf(const std::string& root, const std::string& controller,
                   const std::function<void(const std::string&)>& visit) {
  for (const GroupLine& line : ReadGroupLines(root)) {
    const std::string mount = root + "/sys/fs/cgroup";
    if (line.mControllers.empty()) {
      VisitGroups(mount, line.mPath, visit);
      VisitGroups(mount + "/unified", line.mPath, visit);
    } else if (line.HasController(controller)) {
      VisitGroups(mount + "/" + line.mControllers, line.mPath, visit);
      if (line.mControllers != controller) VisitGroups(mount + "/" + controller, line.mPath, visit);
    }
  }
}

/// Returns the number of processors whose time a group may use, rounded up.
std::uint64_t GetQuota(const std::string& folder) {
  std::optional<std::uint64_t> quota = ReadNumber(folder + "/cpu.cfs_quota_us");
  std::optional<std::uint64_t> period = ReadNumber(folder + "/cpu.cfs_period_us");
  SystemFile file(folder + "/cpu.max");
  std::uint64_t quota2 = 0;
  std::uint64_t period2 = 0;
  if (file >> quota2 >> period2) std::tie(quota, period) = std::pair{quota2, period2};
  if (!quota || !period || *period == 0) return kUnlimited;
  return *quota / *period + (*quota % *period != 0 ? 1 : 0);
}

/// Returns the number of bytes of memory that a group can still use. Cached file contents that the
/// system drops when memory is short count as free.
std::uint64_t GetFreeMemoryOf(const std::string& folder) {
  auto limit = ReadNumber(folder + "/memory.max");
  if (!limit) limit = ReadNumber(folder + "/memory.limit_in_bytes");
  if (!limit || *limit >= kNoLimit) return kUnlimited;
  auto used = ReadNumber(folder + "/memory.current");
  if (!used) used = ReadNumber(folder + "/memory.usage_in_bytes");
  if (!used) return kUnlimited;
  const std::uint64_t cached = ReadEntry(folder + "/memory.stat", "inactive_file").value_or(0);
  const std::uint64_t needed = *used - std::min(*used, cached);
  return *limit - std::min(*limit, needed);
}

unsigned CountAllowedProcessors() {
  cpu_set_t set;
  CPU_ZERO(&set);
  // The call fails if the machine has more processors than the set can hold.
  if (sched_getaffinity(0, sizeof set, &set) != 0) return std::thread::hardware_concurrency();
  return static_cast<unsigned>(CPU_COUNT(&set));
}

}  // namespace

SystemResources::SystemResources(std::string root) : mRoot(std::move(root)) {}

unsigned SystemResources::CountProcessors() const {
  std::uint64_t processors = std::max(1U, CountAllowedProcessors());
  VisitGroupsOf(mRoot, "cpu", [&](const std::string& folder) {
    processors = std::min(processors, std::max<std::uint64_t>(1, GetQuota(folder)));
  });
  return static_cast<unsigned>(processors);
}

std::uint64_t SystemResources::GetFreeMemory() const {
  const auto available = ReadEntry(mRoot + "/proc/meminfo", "MemAvailable:");
  std::uint64_t free = available ? *available * kKilobyte : kUnlimited;
  VisitGroupsOf(mRoot, "memory",
                [&](const std::string& folder) { free = std::min(free, GetFreeMemoryOf(folder)); });
  return std::min(free, GetFreeAddressSpace());
}

std::uint64_t SystemResources::GetFreeAddressSpace() const {
  const auto limits =
      ReadEntries<2>(mRoot + "/proc/self/limits", {"Max address space", "Max data size"});
  if (!limits[0] && !limits[1]) return kUnlimited;
  const auto used = ReadEntries<2>(mRoot + "/proc/self/status", {"VmSize:", "VmData:"});
  std::uint64_t free = kUnlimited;
  for (std::size_t i = 0; i < limits.size(); ++i) {
    if (limits[i] && used[i])
      free = std::min(free, *limits[i] - std::min(*limits[i], *used[i] * kKilobyte));
  }
  return free;
}

}  // namespace QovJbf
