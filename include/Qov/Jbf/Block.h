#pragma once

#include <cstdint>
#include <cstdio>
#include <utility>

#include "Qov/Export.h"

namespace QovJbf {

/// Minimum number of bytes by which a block grows: 10 MiB, or the value of the environment variable
/// TELMORAX_DEFAULT_RYX_BLOCK_SIZE (decimal, at most 4294967294). A value that was read once stays
/// in use after the variable is removed.
QOV_EXPORT extern std::uint32_t default_block_size;

/// A growable byte buffer with a cursor. All stored data is encoded into blocks and decoded from
/// blocks.
///
/// The buffer is allocated by realloc and released by free, because the transformations swap
/// buffers. Errors: MemoryAllocationError if there is no memory or if the block would become larger
/// than 4294967295 bytes; OutOfBounds for reading or seeking past the end; ReadError and WriteError
/// of the file. After an error, size and cursor are as before.
class QOV_EXPORT Block {
 public:
  Block() = default;
  Block(Block&& other) noexcept { Swap(other); }
  Block& operator=(Block&& other) noexcept {
    Block(std::move(other)).Swap(*this);
    return *this;
  }
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
  ~Block();

  /// Grows the buffer by exactly `extra` bytes.
  void AllocateAdditionalMemory(std::uint64_t extra);
  /// Grows the buffer if `n` bytes at offset `at` would fill or exceed it.
  void CheckFreeSpaceAndAllocateMemory(const std::uint32_t& at, std::uint32_t n);

  /// Writes bytes at the cursor. Returns the new cursor.
  std::uint32_t Put(const void* source, std::uint32_t n);
  /// Reads bytes at the cursor.
  void Get(void* target, std::uint32_t n);
  void SetPosition(std::uint64_t position);

  /// Reads `n` bytes of a file to the cursor, which does not move. The caller must have checked
  /// that the file has that many bytes.
  void Read(std::FILE* file, std::uint32_t n);
  /// Writes the whole content. Writes its length (u32) first if `withSize` is true.
  void Write(std::FILE* file, bool withSize) const;

  /// Makes the block empty and frees its memory.
  void Reset();
  /// Frees the buffer but keeps the size. For a block that was written to a file.
  void ReleaseMemory();
  /// Frees the memory after the content. For a block that gets no more bytes.
  void ReleaseSpareMemory();
  /// Returns the buffer, which the caller must free, and makes the block empty.
  unsigned char* Detach();
  /// Takes ownership of a buffer from malloc. Its first `size` bytes become the content. Moves the
  /// cursor to the end.
  void Attach(unsigned char* data, std::uint64_t capacity, std::uint32_t size);

  const unsigned char* GetData() const { return mData; }
  std::uint64_t GetCapacity() const { return mCapacity; }
  std::uint32_t GetSize() const { return mSize; }
  std::uint32_t GetPosition() const { return mPosition; }
  /// Returns the number of bytes from the cursor to the end.
  std::uint32_t GetRemaining() const { return mSize - mPosition; }
  /// Returns true if the memory was released. The block cannot be read or written then.
  bool IsReleased() const { return mData == nullptr && mSize > 0; }

 private:
  void Swap(Block& other) noexcept;

  unsigned char* mData = nullptr;
  std::uint64_t mCapacity = 0;
  std::uint32_t mSize = 0;
  std::uint32_t mPosition = 0;
};

}  // namespace QovJbf
