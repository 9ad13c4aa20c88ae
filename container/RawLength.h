#pragma once

#include <cstdint>

namespace QovJbf {

/// Raises OutOfBounds ("Not enough bytes in the block") from `source` if a compressed block of
/// `storedSize` bytes, including the length at its start, cannot hold `rawLength` bytes of content.
void CheckRawLength(const char* source, std::uint32_t rawLength, std::uint32_t storedSize);

/// Raises the error for a failure of inflate: MemoryAllocationError from `source` for Z_MEM_ERROR,
/// DamagedBlock for all other results.
[[noreturn]] void ThrowInflateError(const char* source, int zlibResult);

/// Writes a line with zlib's result code to standard error and throws DamagedBlock.
[[noreturn]] void ThrowDamagedBlock(int zlibResult);

}  // namespace QovJbf
