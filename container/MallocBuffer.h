#pragma once

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

/// Allocates a buffer. Returns null if there is no memory.
inline MallocBuffer TryToAllocate(std::uint64_t size) {
  return MallocBuffer(static_cast<unsigned char*>(std::malloc(size > 0 ? size : 1)));
}

/// Allocates a buffer. Raises MemoryAllocationError from `source`.
inline MallocBuffer AllocateBuffer(const char* source, std::uint64_t size) {
  MallocBuffer buffer = TryToAllocate(size);
  if (!buffer) Qov::Util::RaiseOutOfMemory(source);
  return buffer;
}

}  // namespace QovJbf
