#include "ThreadCount.h"

#include <pthread.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "ChunkPool.h"

namespace QovJbf {

namespace {

constexpr const char* kThreadsVariable = "RYXMERGE_THREADS";

/// Returns how many bytes more the first of several threads gets than the last, if they take blocks
/// in turn. Returns at most half a block, because more makes no difference.
std::uint64_t GetLead(unsigned threads, std::uint64_t blockSize, std::uint64_t length) {
  if (threads < 2 || blockSize == 0) return 0;
  const std::uint64_t rest = length % (threads * blockSize);
  const std::uint64_t ofFirst = std::min(rest, blockSize);
  const std::uint64_t ofLast = rest - std::min(rest, (threads - 1) * blockSize);
  return std::min(ofFirst - ofLast, blockSize / 2);
}

/// Returns 0 if the variable is not set to a number.
unsigned GetThreadsFromEnvironment() {
  const char* text = std::getenv(kThreadsVariable);
  if (text == nullptr) return 0;
  const unsigned long number = std::strtoul(text, nullptr, 10);
  return static_cast<unsigned>(std::min<unsigned long>(number, kMostThreads));
}

}  // namespace

unsigned GetThreadCount(std::uint64_t blockSize, const SystemResources& resources, unsigned wanted,
                        Compressor compressor) {
  if (wanted == 0) wanted = GetThreadsFromEnvironment();
  const std::uint64_t memory = wanted != 0 ? kUnlimited : resources.GetFreeMemory() / 2;
  const std::uint64_t space = resources.GetFreeAddressSpace() / 2;
  const auto fits = [&](unsigned threads) {
    const std::uint64_t needed = compressor == Compressor::Zlib
                                     ? GetCompressionMemory(threads, blockSize)
                                     : GetWholeBlockMemory(threads, blockSize);
    return needed <= memory && needed + threads * GetThreadSpace() <= space;
  };
  unsigned threads = std::min(wanted != 0 ? wanted : resources.CountProcessors(), kMostThreads);
  while (threads > 1 && !fits(threads)) --threads;
  return threads;
}

std::uint64_t GetThreadSpace() {
  constexpr std::uint64_t kDefaultStack = std::uint64_t{8} << 20;
  constexpr std::uint64_t kHeap = std::uint64_t{64} << 20;  // reserved by malloc for each thread
  pthread_attr_t attributes;
  if (pthread_getattr_default_np(&attributes) != 0) return kDefaultStack + kHeap;
  std::size_t stack = kDefaultStack;
  pthread_attr_getstacksize(&attributes, &stack);
  pthread_attr_destroy(&attributes);
  return stack + kHeap;
}

std::uint64_t GetCompressionMemory(unsigned threads, std::uint64_t blockSize,
                                   std::uint64_t length) {
  constexpr std::uint64_t kLeastChunks = 16;  // many small blocks are queued at a time
  const std::uint64_t queued = (2 * std::uint64_t{threads} - 1) * blockSize / 2;
  const std::uint64_t lead = GetLead(threads, blockSize, length);
  return std::max(queued - std::min(queued, 2 * lead),
                  threads * kLeastChunks * ChunkPool::kChunkSize);
}

std::uint64_t GetWholeBlockMemory(unsigned threads, std::uint64_t blockSize) {
  return 2 * (std::uint64_t{threads} + 1) *
         std::max<std::uint64_t>(blockSize, ChunkPool::kChunkSize);
}

}  // namespace QovJbf
