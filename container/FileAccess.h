#pragma once

#include <cstdint>
#include <cstdio>

/// Reading and writing a file at offsets. Each function raises ReadError ("Unable to read from
/// file") or WriteError from `source` and its line when it cannot do its work; a null `file`
/// cannot be read.
namespace QovJbf {

std::uint64_t GetFileLength(const char* source, std::FILE* file,
                            unsigned long line = __builtin_LINE());

void SeekToRead(const char* source, std::FILE* file, std::uint64_t position,
                unsigned long line = __builtin_LINE());

void ReadAt(const char* source, std::FILE* file, std::uint64_t position, void* target,
            std::size_t n, unsigned long line = __builtin_LINE());

void SeekToWrite(const char* source, std::FILE* file, std::uint64_t position,
                 unsigned long line = __builtin_LINE());

void WriteAt(const char* source, std::FILE* file, std::uint64_t position, const void* data,
             std::size_t n, unsigned long line = __builtin_LINE());

/// Raises unless `n` bytes at `position` lie in a file of `fileLength` bytes.
void CheckInFile(const char* source, std::uint64_t fileLength, std::uint64_t position,
                 std::uint64_t n, unsigned long line = __builtin_LINE());

}  // namespace QovJbf
