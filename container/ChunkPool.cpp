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
  CountUsed(0, kChunkSize);
  return chunk;
}

Chunk ChunkPool::Take(std::size_t capacity) {
  if (capacity == kChunkSize) ++capacity;  // so that Return recognises it
  Chunk chunk;
  if (TakeLarge(capacity, chunk)) return chunk;
  chunk = Chunk(TryToAllocate(capacity), capacity, 0);
  if (!chunk.mData) throw std::bad_alloc();
  const std::lock_guard lock(mMutex);
  CountUsed(0, capacity);
  return chunk;
}

Chunk ChunkPool::TakeForBlock(std::uint32_t n) {
  constexpr std::size_t kStep = std::size_t{1} << 20;
  return Take((std::size_t{n} + kStep) / kStep * kStep);
}

/// Takes the smallest free chunk that is large enough, but not more than twice as large as needed.
/// Returns false if there is none, and makes room for a new one: frees the smallest chunks, because
/// large ones take longer to make.
bool ChunkPool::TakeLarge(std::size_t capacity, Chunk& chunk) {
  const std::lock_guard lock(mMutex);
  const auto isSmaller = [](const Chunk& a, const Chunk& b) { return a.mCapacity < b.mCapacity; };
  std::sort(mFreeLarge.begin(), mFreeLarge.end(), isSmaller);
  const auto best =
      std::find_if(mFreeLarge.begin(), mFreeLarge.end(),
                   [capacity](const Chunk& free) { return free.mCapacity >= capacity; });
  if (best != mFreeLarge.end() && best->mCapacity / 2 <= capacity) {
    chunk = std::move(*best);
    chunk.mSize = 0;
    mFreeLarge.erase(best);
    CountUsed(0, chunk.mCapacity);
    return true;
  }
  std::size_t numBytes = mUsed + capacity;
  const std::size_t most = std::max(mMostUsed, numBytes);
  for (const Chunk& free : mFreeLarge) numBytes += free.mCapacity;
  auto last = mFreeLarge.begin();
  while (numBytes > most) numBytes -= (last++)->mCapacity;
  mNumLarge -= static_cast<std::size_t>(last - mFreeLarge.begin());
  mFreeLarge.erase(mFreeLarge.begin(), last);
  mFreeLarge.reserve(++mNumLarge);  // Return must not allocate
  return false;
}

void ChunkPool::Resize(Chunk& chunk, std::size_t capacity) {
  if (capacity == kChunkSize) ++capacity;
  if (chunk.mCapacity == kChunkSize) {
    const std::lock_guard lock(mMutex);
    mFreeLarge.reserve(++mNumLarge);
    --mNumChunks;
  }
  void* resized = std::realloc(chunk.mData.get(), capacity);
  if (resized == nullptr) throw std::bad_alloc();
  static_cast<void>(chunk.mData.release());
  chunk.mData.reset(static_cast<unsigned char*>(resized));
  const std::lock_guard lock(mMutex);
  CountUsed(std::exchange(chunk.mCapacity, capacity), capacity);
}

void ChunkPool::Return(Chunk chunk) noexcept {
  if (chunk.mCapacity == 0) return;
  const std::lock_guard lock(mMutex);
  CountUsed(chunk.mCapacity, 0);
  (chunk.mCapacity == kChunkSize ? mFree : mFreeLarge).push_back(std::move(chunk));
}

void ChunkPool::CountUsed(std::size_t before, std::size_t now) {
  mUsed = mUsed - before + now;
  mMostUsed = std::max(mMostUsed, mUsed);
}

std::size_t ChunkPool::GetUsed() const {
  const std::lock_guard lock(mMutex);
  return mUsed;
}

std::size_t ChunkPool::GetMostUsed() const {
  const std::lock_guard lock(mMutex);
  return mMostUsed;
}

std::shared_ptr<ChunkPool> GetBlockBuffers() {
  static std::weak_ptr<ChunkPool> current;
  std::shared_ptr<ChunkPool> buffers = current.lock();
  if (!buffers) {
    buffers = std::make_shared<ChunkPool>();
    current = buffers;
  }
  return buffers;
}

}  // namespace QovJbf
