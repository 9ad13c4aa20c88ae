#pragma once

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <memory>

#include "Qov/Util/Raise.h"

namespace QovJbf {

struct FreeDeleter {
  void operator()(unsigned char* data) const { std::free(data); }
};

/// A buffer that a block can take ownership of.
using MallocBuffer = std::unique_ptr<unsigned char, FreeDeleter>;

/// Size and alignment of a huge page of the system.
inline constexpr std::uint64_t kHugePageSize = std::uint64_t{2} << 20;
/// Buffers of at least this size are made of huge pages, where the system has them, because the
/// system clears and maps these several times faster. By default, they are so large that malloc
/// always takes them from the system one by one and returns them at once. Smaller buffers may come
/// from its heap, which alignment would fragment.
inline std::uint64_t gLeastHugeBuffer = std::uint64_t{33} << 20;

/// Makes malloc take all buffers of blocks from the system and return them at once, and makes them
/// of huge pages. By default, malloc keeps some of them for each thread. Programs call it when they
/// start.
void ReturnLargeBuffers();

/// Allocates a buffer. Returns null if there is no memory.
inline MallocBuffer TryToAllocate(std::uint64_t size) {
  if (size >= gLeastHugeBuffer) {
    const std::uint64_t rounded = (size + kHugePageSize - 1) / kHugePageSize * kHugePageSize;
    if (void* data = std::aligned_alloc(kHugePageSize, rounded)) {
      ::madvise(data, rounded, MADV_HUGEPAGE);  // a failure only costs time
      return MallocBuffer(static_cast<unsigned char*>(data));
    }
  }
  return MallocBuffer(static_cast<unsigned char*>(std::malloc(size > 0 ? size : 1)));
}

/// Allocates a buffer. Raises MemoryAllocationError from `source`.
inline MallocBuffer AllocateBuffer(const char* source, std::uint64_t size) {
  MallocBuffer buffer = TryToAllocate(size);
  if (!buffer) Qov::Util::RaiseOutOfMemory(source);
  return buffer;
}

}  // namespace QovJbf
