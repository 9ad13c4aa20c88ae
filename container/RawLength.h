#pragma once

#include <cstdint>

namespace QovJbf {

/// Raises OutOfBounds ("Not enough bytes in the block") from `source` if no zlib stream of the
/// `storedSize` bytes of a compressed block, length field included, can inflate to `rawLength`.
void CheckRawLength(const char* source, std::uint32_t rawLength, std::uint32_t storedSize);

/// Raises the error for a zlib result other than Z_OK from inflating: MemoryAllocationError from
/// `source` for Z_MEM_ERROR, DamagedBlock for all others.
[[noreturn]] void ThrowInflateError(const char* source, int zlibResult);

/// Reports a stream that zlib refuses: a line with its result code on standard error, then a
/// DamagedBlock.
[[noreturn]] void ThrowDamagedBlock(int zlibResult);

}  // namespace QovJbf
