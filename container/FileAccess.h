#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

/// Reading and writing a file at offsets. The functions raise ReadError ("Unable to read from
/// file") or WriteError with `source` and the line of the caller. Reading a null `file` is a
/// ReadError.
namespace QovJbf {

/// Returns the number of bytes of a file, 0 if it cannot be determined. Raises nothing.
std::uint64_t GetFileSize(const std::string& path);

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

/// Lets the file system copy up to `n` bytes between two files, which can share them then. Returns
/// the number of copied bytes, which is less than `n` if the file system cannot do that or fails.
/// The positions of the descriptors stay the same.
std::uint64_t CopyInFileSystem(int source, std::uint64_t from, int target, std::uint64_t to,
                               std::uint64_t n);

/// Lets the kernel begin to write `n` bytes of the file to the disk, so that flushing the file
/// takes less time. Failures are ignored, because it is only a hint.
void StartWriteback(std::FILE* file, std::uint64_t position, std::uint64_t n);

/// Raises ReadError if a file of `fileLength` bytes does not have `n` bytes at `position`.
void CheckInFile(const char* source, std::uint64_t fileLength, std::uint64_t position,
                 std::uint64_t n, unsigned long line = __builtin_LINE());

}  // namespace QovJbf
