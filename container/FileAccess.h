#pragma once

#include <cstdint>
#include <cstdio>

/// Reading and writing a file at offsets. Each function raises ReadError ("Unable to read from
/// file") or WriteError from `source` when it cannot do its work; a null `file` cannot be read.
namespace QovJbf {

std::uint64_t GetFileLength(const char* source, std::FILE* file);

void SeekToRead(const char* source, std::FILE* file, std::uint64_t position);

void ReadAt(const char* source, std::FILE* file, std::uint64_t position, void* target,
            std::size_t n);

void SeekToWrite(const char* source, std::FILE* file, std::uint64_t position);

void WriteAt(const char* source, std::FILE* file, std::uint64_t position, const void* data,
             std::size_t n);

/// Raises unless `n` bytes at `position` lie in a file of `fileLength` bytes.
void CheckInFile(const char* source, std::uint64_t fileLength, std::uint64_t position,
                 std::uint64_t n);

}  // namespace QovJbf
