#include "ChunkPool.h"

#include <algorithm>
#include <new>
#include <utility>

namespace QovJbf {

Chunk ChunkPool::Take() {
  const std::lock_guard lock(mMutex);
  Chunk chunk;
  if (mFree.empty()) {
    mFree.reserve(mNumChunks + 1);  // Return must not allocate
    MallocBuffer data(static_cast<unsigned char*>(std::malloc(kChunkSize)));
    if (!data) throw std::bad_alloc();
    chunk = Chunk(std::move(data), kChunkSize, 0);
    ++mNumChunks;
  } else {
    chunk = std::move(mFree.back());
    mFree.pop_back();
    chunk.mSize = 0;
  }
  mUsed += kChunkSize;
  mMostUsed = std::max(mMostUsed, mUsed);
  return chunk;
}

void ChunkPool::Return(Chunk chunk) noexcept {
  if (chunk.mCapacity != kChunkSize) return;
  const std::lock_guard lock(mMutex);
  mUsed -= kChunkSize;
  mFree.push_back(std::move(chunk));
}

std::size_t ChunkPool::GetUsed() const {
  const std::lock_guard lock(mMutex);
  return mUsed;
}

std::size_t ChunkPool::GetMostUsed() const {
  const std::lock_guard lock(mMutex);
  return mMostUsed;
}

}  // namespace QovJbf
