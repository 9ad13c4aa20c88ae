#pragma once

#include <cstdint>
#include <cstdio>
#include <utility>

#include "Qov/Export.h"

namespace QovJbf {

/// The least number of bytes by which a block grows: 10 MiB, unless the environment variable
/// TELMORAX_DEFAULT_RYX_BLOCK_SIZE says otherwise (decimal, at most 4294967294). A value once
/// seen stays in force when the variable is gone.
QOV_EXPORT extern std::uint32_t default_block_size;

/// A growable byte buffer with a cursor. All persistent data pass through one.
///
/// The buffer comes from realloc and goes to free, because the transformations swap buffers.
/// Errors: MemoryAllocationError when there is no memory or the block would pass 4294967295
/// bytes (nothing is written then); OutOfBounds when reading or seeking past the end; ReadError
/// and WriteError of the file. After an error size and cursor are as before.
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

  /// Exact growth by `extra` bytes.
  void AllocateAdditionalMemory(std::uint64_t extra);
  /// Makes room for `n` bytes at `at`. A write that would just fill the buffer grows it too.
  void CheckFreeSpaceAndAllocateMemory(const std::uint32_t& at, std::uint32_t n);

  /// Writes at the cursor and returns the new cursor.
  std::uint32_t Put(const void* source, std::uint32_t n);
  /// Reads at the cursor.
  void Get(void* target, std::uint32_t n);
  void SetPosition(std::uint64_t position);

  /// Takes `n` bytes of a file in at the cursor, which stays. The caller has checked `n` against
  /// the bytes that the file still holds.
  void Read(std::FILE* file, std::uint32_t n);
  /// Writes the whole content, after its 32-bit length if `withSize`.
  void Write(std::FILE* file, bool withSize) const;

  /// Back to the empty state, without memory.
  void Reset();
  /// Frees the buffer but keeps the size, for a block whose bytes now lie in a file.
  void ReleaseMemory();
  /// Gives back memory beyond the content, for a block that gets no more writes.
  void ReleaseSpareMemory();
  /// Hands the buffer to the caller, who frees it, and resets the block.
  unsigned char* Detach();
  /// Takes over a buffer from malloc whose first `size` bytes are the new content. The cursor
  /// ends behind them.
  void Attach(unsigned char* data, std::uint64_t capacity, std::uint32_t size);

  const unsigned char* GetData() const { return mData; }
  std::uint64_t GetCapacity() const { return mCapacity; }
  std::uint32_t GetSize() const { return mSize; }
  std::uint32_t GetPosition() const { return mPosition; }
  /// The bytes between the cursor and the end.
  std::uint32_t GetRemaining() const { return mSize - mPosition; }
  /// True after ReleaseMemory: there is a size, but nothing can be read or written.
  bool IsReleased() const { return mData == nullptr && mSize > 0; }

 private:
  void Swap(Block& other) noexcept;

  unsigned char* mData = nullptr;
  std::uint64_t mCapacity = 0;
  std::uint32_t mSize = 0;
  std::uint32_t mPosition = 0;
};

}  // namespace QovJbf
