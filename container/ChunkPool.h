#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "MallocBuffer.h"

namespace QovJbf {

/// A piece of the content of a block, or of its compressed form. Only one thread uses it at a time.
struct Chunk {
  Chunk() = default;
  Chunk(MallocBuffer data, std::size_t capacity, std::size_t size)
      : mData(std::move(data)), mCapacity(capacity), mSize(size) {}
  Chunk(Chunk&& other) noexcept
      : mData(std::move(other.mData)),
        mCapacity(std::exchange(other.mCapacity, 0)),
        mSize(std::exchange(other.mSize, 0)) {}
  Chunk& operator=(Chunk&& other) noexcept {
    mData = std::move(other.mData);
    mCapacity = std::exchange(other.mCapacity, 0);
    mSize = std::exchange(other.mSize, 0);
    return *this;
  }

  unsigned char* GetEnd() const { return mData.get() + mSize; }
  std::size_t GetSpace() const { return mCapacity - mSize; }

  MallocBuffer mData;
  std::size_t mCapacity = 0;  ///< 0 for a buffer that is not from a pool and gets no more bytes.
  std::size_t mSize = 0;
};

/// Chunks, shared by all threads. Returned chunks are reused, or freed for chunks of other sizes,
/// so the pool has at most as many bytes as were in use at one time. Reuse saves time, because the
/// system clears new memory.
class ChunkPool {
 public:
  /// A multiple of 32 KiB, by which deflate's window moves, so that deflate finds the same matches
  /// as in the whole content.
  static constexpr std::size_t kChunkSize = std::size_t{256} * 1024;

  /// Returns an empty chunk. Throws std::bad_alloc.
  Chunk Take();
  /// Returns an empty chunk of at least `capacity` bytes. Throws std::bad_alloc.
  Chunk Take(std::size_t capacity);
  /// Returns an empty chunk for a block of `n` bytes. Its capacity is rounded up, because chunks of
  /// few sizes are reused more often. Throws std::bad_alloc.
  Chunk TakeForBlock(std::uint32_t n);
  /// Changes the size of a chunk and keeps its content. Throws std::bad_alloc.
  void Resize(Chunk& chunk, std::size_t capacity);
  /// Takes a chunk back. Frees a chunk that is not from the pool.
  void Return(Chunk chunk) noexcept;

  /// Returns the size in bytes of all chunks that are in use.
  std::size_t GetUsed() const;
  /// Returns the largest value of GetUsed so far.
  std::size_t GetMostUsed() const;

 private:
  bool TakeLarge(std::size_t capacity, Chunk& chunk);
  void CountUsed(std::size_t before, std::size_t now);

  mutable std::mutex mMutex;
  std::vector<Chunk> mFree;
  std::vector<Chunk> mFreeLarge;  ///< Chunks of other sizes.
  std::size_t mNumChunks = 0;     ///< Number of chunks of the usual size, in use or free.
  std::size_t mNumLarge = 0;      ///< The same of other sizes.
  std::size_t mUsed = 0;
  std::size_t mMostUsed = 0;
};

/// Returns the pool of the blocks that are decompressed ahead. It exists while somebody holds it.
/// Called by the thread that reads.
std::shared_ptr<ChunkPool> GetBlockBuffers();

}  // namespace QovJbf
