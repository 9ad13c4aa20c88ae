#pragma once

#include <cstddef>
#include <mutex>
#include <utility>
#include <vector>

#include "MallocBuffer.h"

namespace QovJbf {

/// A piece of a block on its way to a worker, or of what the worker made of it. One thread has it
/// at a time.
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
  std::size_t mCapacity = 0;  ///< 0 for a buffer that is no pool's, which gets no more content.
  std::size_t mSize = 0;
};

/// Chunks of one size for all threads, used again and again: what a worker has read is what it
/// writes into next, so that all chunks together never take more than were in use at once.
class ChunkPool {
 public:
  /// A multiple of the 32 KiB by which deflate's window moves. Fed in such pieces, deflate finds
  /// the same matches as in the whole.
  static constexpr std::size_t kChunkSize = std::size_t{256} * 1024;

  /// An empty chunk. Throws std::bad_alloc.
  Chunk Take();
  /// Takes a chunk back; one that is not the pool's is freed.
  void Return(Chunk chunk) noexcept;

  /// Bytes of the chunks that were taken and not returned.
  std::size_t GetUsed() const;
  /// The most that GetUsed ever was.
  std::size_t GetMostUsed() const;

 private:
  mutable std::mutex mMutex;
  std::vector<Chunk> mFree;
  std::size_t mNumChunks = 0;  ///< In all.
  std::size_t mUsed = 0;
  std::size_t mMostUsed = 0;
};

}  // namespace QovJbf
