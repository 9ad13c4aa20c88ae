#include "ThreadCount.h"

#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <cstdlib>
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

#include "ChunkPool.h"

namespace QovJbf {

namespace {

constexpr const char* kThreadsVariable = "RYXMERGE_THREADS";
constexpr unsigned kMostThreads = 256;
constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();

/// A file of the operating system. Its numbers are read in the C locale, whichever locale the
/// process has set.
class SystemFile : public std::ifstream {
 public:
  explicit SystemFile(const std::string& path) {
    imbue(std::locale::classic());
    open(path);
  }
};

/// The first word of a file as a number; nothing for a file that is not there or says "max".
std::optional<std::uint64_t> ReadNumber(const std::string& path) {
  SystemFile file(path);
  std::int64_t number = 0;
  if (!(file >> number) || number < 0) return std::nullopt;
  return static_cast<std::uint64_t>(number);
}

/// Returns the number after `key` in a file of lines that begin with "key number".
std::optional<std::uint64_t> ReadEntry(const std::string& path, const std::string& key) {
  SystemFile file(path);
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with(key)) continue;
    std::istringstream rest(line.substr(key.size()));
    rest.imbue(std::locale::classic());
    std::uint64_t number = 0;
    if ((rest.peek() == ' ' || rest.peek() == '\t') && rest >> number) return number;
  }
  return std::nullopt;
}

/// One line of /proc/self/cgroup: "hierarchy:controller,controller:path". The second version has
/// a single hierarchy, whose list of controllers is empty.
struct GroupLine {
  std::string mControllers;
  std::string mPath;

  bool IsOf(const std::string& controller) const {
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

/// The group's folder and those of the groups around it, whose limits hold too. In a container
/// the path may be that of the host, where only the topmost folder is to be seen.
void VisitGroups(const std::string& mount, std::string path,
                 const std::function<void(const std::string&)>& visit) {
  while (true) {
    while (!path.empty() && path.back() == '/') path.pop_back();
    visit(mount + path);
    if (path.empty()) return;
    path.erase(path.rfind('/'));
  }
}

/// Visits the folders in which the limits of `controller` may stand.
void VisitGroupsOf(const std::string& root, const std::string& controller,
                   const std::function<void(const std::string&)>& visit) {
  for (const GroupLine& line : ReadGroupLines(root)) {
    const std::string mount = root + "/sys/fs/cgroup";
    if (line.mControllers.empty()) {
      VisitGroups(mount, line.mPath, visit);
      VisitGroups(mount + "/unified", line.mPath, visit);
    } else if (line.IsOf(controller)) {
      VisitGroups(mount + "/" + line.mControllers, line.mPath, visit);
      if (line.mControllers != controller) VisitGroups(mount + "/" + controller, line.mPath, visit);
    }
  }
}

/// Processors' worth of time that a group has; a part of one counts as one.
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

/// What a group may still take. File contents that are kept in memory only while there is room
/// count as free.
std::uint64_t GetFreeMemoryOf(const std::string& folder) {
  auto limit = ReadNumber(folder + "/memory.max");
  if (!limit) limit = ReadNumber(folder + "/memory.limit_in_bytes");
  auto used = ReadNumber(folder + "/memory.current");
  if (!used) used = ReadNumber(folder + "/memory.usage_in_bytes");
  if (!limit || !used) return kUnlimited;
  const std::uint64_t cached = ReadEntry(folder + "/memory.stat", "inactive_file").value_or(0);
  const std::uint64_t needed = *used - std::min(*used, cached);
  return *limit - std::min(*limit, needed);
}

unsigned CountAllowedProcessors() {
  cpu_set_t set;
  CPU_ZERO(&set);
  // It fails on a machine with more processors than the set has room for.
  if (sched_getaffinity(0, sizeof set, &set) != 0) return std::thread::hardware_concurrency();
  return static_cast<unsigned>(CPU_COUNT(&set));
}

/// By how much the first of some threads that take blocks in turn has more to do than the last;
/// no more than what makes a difference, half a block.
std::uint64_t GetLead(unsigned threads, std::uint64_t blockSize, std::uint64_t length) {
  if (threads < 2 || blockSize == 0) return 0;
  const std::uint64_t rest = length % (threads * blockSize);
  const std::uint64_t ofFirst = std::min(rest, blockSize);
  const std::uint64_t ofLast = rest - std::min(rest, (threads - 1) * blockSize);
  return std::min(ofFirst - ofLast, blockSize / 2);
}

std::optional<unsigned> GetThreadsFromEnvironment() {
  const char* text = std::getenv(kThreadsVariable);
  if (text == nullptr) return std::nullopt;
  const unsigned long number = std::strtoul(text, nullptr, 10);
  if (number == 0) return std::nullopt;
  return static_cast<unsigned>(std::min<unsigned long>(number, kMostThreads));
}

}  // namespace

MachineShare::MachineShare(std::string root) : mRoot(std::move(root)) {}

unsigned MachineShare::CountProcessors() const {
  std::uint64_t processors = std::max(1U, CountAllowedProcessors());
  VisitGroupsOf(mRoot, "cpu", [&](const std::string& folder) {
    processors = std::min(processors, std::max<std::uint64_t>(1, GetQuota(folder)));
  });
  return static_cast<unsigned>(processors);
}

std::uint64_t MachineShare::GetFreeMemory() const {
  constexpr std::uint64_t kKilobyte = 1024;
  const auto available = ReadEntry(mRoot + "/proc/meminfo", "MemAvailable:");
  std::uint64_t free = available ? *available * kKilobyte : kUnlimited;
  VisitGroupsOf(mRoot, "memory",
                [&](const std::string& folder) { free = std::min(free, GetFreeMemoryOf(folder)); });
  return std::min(free, GetFreeAddressSpace());
}

std::uint64_t MachineShare::GetFreeAddressSpace() const {
  constexpr std::uint64_t kKilobyte = 1024;
  std::uint64_t free = kUnlimited;
  const std::pair<const char*, const char*> limits[] = {{"Max address space", "VmSize:"},
                                                        {"Max data size", "VmData:"}};
  for (const auto& [name, measure] : limits) {
    const auto limit = ReadEntry(mRoot + "/proc/self/limits", name);
    const auto used = ReadEntry(mRoot + "/proc/self/status", measure);
    if (limit && used) free = std::min(free, *limit - std::min(*limit, *used * kKilobyte));
  }
  return free;
}

unsigned GetThreadCount(std::uint64_t blockSize, const MachineShare& share) {
  const auto wanted = GetThreadsFromEnvironment();
  const std::uint64_t memory = wanted ? kUnlimited : share.GetFreeMemory() / 2;
  const std::uint64_t space = share.GetFreeAddressSpace() / 2;
  const auto fits = [&](unsigned threads) {
    const std::uint64_t needed = GetCompressionMemory(threads, blockSize);
    return needed <= memory && needed + threads * GetThreadSpace() <= space;
  };
  unsigned threads = wanted ? *wanted : std::min(share.CountProcessors(), kMostThreads);
  while (threads > 1 && !fits(threads)) --threads;
  return threads;
}

std::uint64_t GetThreadSpace() {
  constexpr std::uint64_t kUsualStack = std::uint64_t{8} << 20;
  constexpr std::uint64_t kHeap = std::uint64_t{64} << 20;  // malloc reserves it for each thread
  pthread_attr_t attributes;
  if (pthread_getattr_default_np(&attributes) != 0) return kUsualStack + kHeap;
  std::size_t stack = kUsualStack;
  pthread_attr_getstacksize(&attributes, &stack);
  pthread_attr_destroy(&attributes);
  return stack + kHeap;
}

std::uint64_t GetCompressionMemory(unsigned threads, std::uint64_t blockSize,
                                   std::uint64_t length) {
  constexpr std::uint64_t kLeastChunks = 16;  // small blocks are queued by the dozen
  const std::uint64_t queued = (2 * std::uint64_t{threads} - 1) * blockSize / 2;
  const std::uint64_t lead = GetLead(threads, blockSize, length);
  return std::max(queued - std::min(queued, 2 * lead),
                  threads * kLeastChunks * ChunkPool::kChunkSize);
}

}  // namespace QovJbf
