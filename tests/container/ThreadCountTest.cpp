#include "container/SystemResources.h"
#include "container/ThreadCount.h"

#include <gtest/gtest.h>

#include "ContainerSupport.h"
#include "support/ForeignLocale.h"

namespace QovJbf {
namespace {

using namespace Qov::Test;

constexpr std::uint64_t kMegabyte = 1 << 20;
constexpr std::uint64_t kUnknown = 0xFFFFFFFFFFFFFFFF;

/// A machine described by its system files.
class ThreadCountTest : public testing::Test {
 protected:
  void Write(const std::string& path, const std::string& text) {
    std::filesystem::create_directories((mRoot.GetPath() / path).parent_path());
    WriteFile(mRoot / path, text);
  }
  void WriteAvailable(std::uint64_t megabytes) {
    Write("proc/meminfo", "MemTotal: 99999999 kB\nMemFree: 1 kB\nMemAvailable: " +
                              std::to_string(megabytes * 1024) + " kB\n");
  }
  SystemResources Share() const { return SystemResources(mRoot.GetPath().string()); }

  const unsigned mAllowed = SystemResources("/nowhere").CountProcessors();
  TempDir mRoot;
  const ScopedEnvironment mThreads{"RYXMERGE_THREADS", std::nullopt};
};

TEST_F(ThreadCountTest, UsesAllProcessorsWithoutLimits) {
  EXPECT_GE(mAllowed, 1U);
  EXPECT_EQ(Share().GetFreeMemory(), kUnknown);
  Write("proc/self/cgroup", "0::/\n1:cpu:/gone\nnonsense\n");
  Write("sys/fs/cgroup/cpu.max", "max 100000\n");
  Write("sys/fs/cgroup/memory.max", "max\n");
  Write("sys/fs/cgroup/memory.current", "5\n");
  EXPECT_EQ(Share().CountProcessors(), mAllowed);
  EXPECT_EQ(Share().GetFreeMemory(), kUnknown);
  WriteAvailable(700);
  EXPECT_EQ(Share().GetFreeMemory(), 700 * kMegabyte);
}

TEST_F(ThreadCountTest, ObeysTheLimitsOfTheGroupAndItsParents) {
  WriteAvailable(900);
  Write("proc/self/cgroup", "0::/outer/inner\n");
  Write("sys/fs/cgroup/outer/inner/cpu.max", "max 100000\n");
  Write("sys/fs/cgroup/outer/cpu.max", "50000 100000\n");
  EXPECT_EQ(Share().CountProcessors(), 1U);
  Write("sys/fs/cgroup/outer/cpu.max", "100001 100000\n");
  EXPECT_EQ(Share().CountProcessors(), std::min(mAllowed, 2U));

  Write("sys/fs/cgroup/outer/memory.max", std::to_string(300 * kMegabyte));
  Write("sys/fs/cgroup/outer/memory.current", std::to_string(250 * kMegabyte));
  EXPECT_EQ(Share().GetFreeMemory(), 50 * kMegabyte);
  Write("sys/fs/cgroup/outer/memory.stat",
        "active_file 7\ninactive_file " + std::to_string(100 * kMegabyte) + "\n");
  EXPECT_EQ(Share().GetFreeMemory(), 150 * kMegabyte);
  Write("sys/fs/cgroup/outer/memory.current", std::to_string(500 * kMegabyte));
  EXPECT_EQ(Share().GetFreeMemory(), 0U);
}

TEST_F(ThreadCountTest, ReadsGroupsOfVersion1) {
  WriteAvailable(900);
  Write("proc/self/cgroup", "4:memory:/of/the/host\n3:cpu,cpuacct:/mine\n0::/\n");
  Write("sys/fs/cgroup/cpu,cpuacct/mine/cpu.cfs_quota_us", "-1\n");
  Write("sys/fs/cgroup/cpu,cpuacct/mine/cpu.cfs_period_us", "100000\n");
  EXPECT_EQ(Share().CountProcessors(), mAllowed);
  Write("sys/fs/cgroup/cpu,cpuacct/mine/cpu.cfs_quota_us", "100000\n");
  EXPECT_EQ(Share().CountProcessors(), 1U);
  Write("sys/fs/cgroup/memory/memory.limit_in_bytes", std::to_string(80 * kMegabyte));
  Write("sys/fs/cgroup/memory/memory.usage_in_bytes", std::to_string(30 * kMegabyte));
  EXPECT_EQ(Share().GetFreeMemory(), 50 * kMegabyte);
}

TEST_F(ThreadCountTest, UsesAtMostHalfOfTheFreeMemory) {
  EXPECT_EQ(GetCompressionMemory(2, 200 * kMegabyte), 300 * kMegabyte);
  EXPECT_EQ(GetThreadCount(200 * kMegabyte, Share()), mAllowed);
  WriteAvailable(599);
  EXPECT_EQ(GetThreadCount(200 * kMegabyte, Share()), 1U);
  WriteAvailable(600);
  EXPECT_EQ(GetThreadCount(200 * kMegabyte, Share()), std::min(mAllowed, 2U));
  EXPECT_EQ(GetThreadCount(16 * kMegabyte, Share()), std::min(mAllowed, 19U));
  WriteAvailable(0);
  EXPECT_EQ(GetThreadCount(100, Share()), 1U);
}

TEST_F(ThreadCountTest, ObeysTheLimitsOfTheProcess) {
  const auto write = [&](const std::string& space, const std::string& data) {
    Write("proc/self/limits",
          "Limit             Soft Limit    Hard Limit    Units\n"
          "Max data size     " +
              data +
              "     unlimited     bytes\n"
              "Max address space " +
              space + "     unlimited     bytes\n");
  };
  const auto megabytes = [](std::uint64_t n) { return std::to_string(n * kMegabyte); };
  Write("proc/self/status", "Name:\tx\nVmSize:\t   10240 kB\nVmData:\t    1024 kB\n");
  write("unlimited", "unlimited");
  EXPECT_EQ(Share().GetFreeAddressSpace(), kUnknown);
  EXPECT_EQ(GetThreadCount(200 * kMegabyte, Share()), mAllowed);
  write(megabytes(100), "unlimited");
  EXPECT_EQ(Share().GetFreeAddressSpace(), 90 * kMegabyte);
  EXPECT_EQ(Share().GetFreeMemory(), 90 * kMegabyte);
  EXPECT_EQ(GetThreadCount(200 * kMegabyte, Share()), 1U);
  {
    const ScopedEnvironment environment("RYXMERGE_THREADS", "7");
    EXPECT_EQ(GetThreadCount(200 * kMegabyte, Share()), 1U);
  }
  write("unlimited", megabytes(50));
  EXPECT_EQ(Share().GetFreeAddressSpace(), 49 * kMegabyte);
  write(megabytes(5), megabytes(5));
  EXPECT_EQ(Share().GetFreeAddressSpace(), 0U);
  // The chunks of two threads fit, but not their stacks as well.
  const std::uint64_t needed = 2 * (300 + 2 * GetThreadSpace() / kMegabyte);
  write(megabytes(10 + needed - 1), "unlimited");
  EXPECT_EQ(GetThreadCount(200 * kMegabyte, Share()), 1U);
  write(megabytes(10 + needed), "unlimited");
  EXPECT_EQ(GetThreadCount(200 * kMegabyte, Share()), std::min(mAllowed, 2U));
}

TEST_F(ThreadCountTest, ReadsNumbersInAnyLocale) {
  Write("proc/self/cgroup", "0::/\n");
  Write("sys/fs/cgroup/cpu.max", "100 100\n");
  const ForeignStreams streams;
  EXPECT_EQ(Share().CountProcessors(), 1U);
}

TEST_F(ThreadCountTest, ObeysTheEnvironment) {
  WriteAvailable(0);
  for (const auto& [text, threads] : std::initializer_list<std::pair<const char*, unsigned>>{
           {"1", 1}, {"7", 7}, {"100000", 256}, {"0", 1}, {"many", 1}, {"", 1}}) {
    const ScopedEnvironment environment("RYXMERGE_THREADS", text);
    EXPECT_EQ(GetThreadCount(100, Share()), threads) << text;
  }
}

}  // namespace
}  // namespace QovJbf
