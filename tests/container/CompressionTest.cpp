#include <gtest/gtest.h>

#include "ContainerSupport.h"
#include "Qov/Jbf/BlockZlibCompressor.h"
#include "container/CompressionQueue.h"

namespace QovJbf {
namespace {

using namespace Qov::Test;

constexpr std::size_t kChunk = ChunkPool::kChunkSize;
constexpr int kLevel = 6;

std::string CompressedAtOnce(const std::string& content) {
  Block block = BlockOf(content);
  BlockZlibCompressor{kLevel}(block);
  return ContentOf(block).substr(4);
}

/// Passes content through a queue, chunk by chunk.
class Passage {
 public:
  Passage(CompressionQueue& queue, std::string content)
      : mQueue(queue), mContent(std::move(content)), mJob(queue.Begin()) {}

  /// Adds the next chunk, or ends the block. Returns false if the block had already ended.
  bool Add() {
    if (mIsWhole) return false;
    const std::size_t n = std::min(kChunk, mContent.size() - mAdded);
    mIsWhole = n == 0;
    if (mIsWhole) {
      mQueue.Finish(mJob);
      return true;
    }
    Chunk chunk = mQueue.GetPool().Take();
    std::memcpy(chunk.GetEnd(), mContent.data() + mAdded, n);
    chunk.mSize = n;
    mAdded += n;
    mQueue.Add(mJob, std::move(chunk));
    return true;
  }

  /// Takes the available output. Returns true if it was the last output.
  bool Take() {
    CompressionQueue::Output output = mQueue.TakeOutput(*mJob);
    for (Chunk& chunk : output.mChunks) {
      mCompressed.append(reinterpret_cast<const char*>(chunk.mData.get()), chunk.mSize);
      mQueue.GetPool().Return(std::move(chunk));
    }
    return output.mIsLast;
  }

  void TakeAll() {
    while (!Take()) mQueue.Wait();
  }

  const std::string& GetCompressed() const { return mCompressed; }

 private:
  CompressionQueue& mQueue;
  std::string mContent;
  CompressionQueue::JobHandle mJob;
  std::size_t mAdded = 0;
  bool mIsWhole = false;
  std::string mCompressed;
};

/// Returns sections that compress not at all, slightly and well, in turn.
std::string MixedBytes(std::size_t n, unsigned seed) {
  std::mt19937 random(seed);
  std::string bytes(n, '\0');
  for (std::size_t i = 0; i < n; ++i) {
    const unsigned kind = static_cast<unsigned>(i / 40000) % 3;
    bytes[i] = static_cast<char>(kind == 0 ? random() : kind == 1 ? random() % 20 : i / 100);
  }
  return bytes;
}

TEST(CompressionQueueTest, EqualsASingleCallAndKeepsItsMemoryBound) {
  constexpr std::size_t kSizes[] = {0,      9 * kChunk, 1,   kChunk - 1,     9 * kChunk,
                                    kChunk, kChunk + 1, 300, 9 * kChunk + 7, 2 * kChunk};
  constexpr std::uint64_t kBound = 12 * kChunk;
  for (const unsigned threads : {1U, 2U, 3U}) {
    CompressionQueue queue(threads, kBound, kLevel);
    std::deque<Passage> passages;
    std::size_t open = 0;  // the first passage that has not ended
    const auto takeWhatIsThere = [&] {
      while (open + 1 < passages.size() && passages[open].Take()) ++open;
      if (open + 1 == passages.size()) passages[open].Take();
    };
    for (const std::size_t size : kSizes) {
      passages.emplace_back(queue, MixedBytes(size, 1));
      do {
        for (takeWhatIsThere(); !queue.HasRoom(); takeWhatIsThere()) queue.Wait();
      } while (passages.back().Add());
    }
    for (; open < passages.size(); ++open) passages[open].TakeAll();
    for (std::size_t i = 0; i < passages.size(); ++i) {
      EXPECT_EQ(passages[i].GetCompressed(), CompressedAtOnce(MixedBytes(kSizes[i], 1)))
          << kSizes[i] << " on " << threads;
    }
    EXPECT_LE(queue.GetPool().GetMostUsed(), kBound + threads * kChunk);
    EXPECT_EQ(queue.GetPool().GetUsed(), 0U);
  }
}

TEST(CompressionQueueTest, CompressesWholeBlocksWithoutExceedingItsMemory) {
  constexpr std::size_t kSize = 5 * kChunk + 7;
  constexpr std::uint64_t kBound = 4 * kSize;
  std::string first;
  for (const unsigned threads : {1U, 3U}) {
    CompressionQueue queue(threads, kBound, kLevel, Compressor::Fastest);
    std::deque<CompressionQueue::JobHandle> jobs;
    std::string stream;
    const auto takeFirst = [&] {
      CompressionQueue::Output output = queue.TakeOutput(*jobs.front());
      for (Chunk& chunk : output.mChunks) {
        stream.append(reinterpret_cast<const char*>(chunk.mData.get()), chunk.mSize);
        queue.GetPool().Return(std::move(chunk));
      }
      if (output.mIsLast) jobs.pop_front();
      return output.mIsLast;
    };
    for (unsigned i = 0; i < 9; ++i) {
      do {
        while (!jobs.empty() && takeFirst()) {
        }
        if (!queue.HasRoom(kSize)) queue.Wait();
      } while (!queue.HasRoom(kSize));
      Chunk chunk = queue.GetPool().Take(kSize);
      chunk.mSize = kSize;
      MixedBytes(kSize, i).copy(reinterpret_cast<char*>(chunk.mData.get()), kSize);
      jobs.push_back(queue.Begin());
      queue.AddWhole(jobs.back(), std::move(chunk));
    }
    while (!jobs.empty()) {
      if (!takeFirst()) queue.Wait();
    }
    if (first.empty()) first = stream;
    EXPECT_TRUE(stream == first) << threads;  // StreamedBlocksTest decompresses them
    EXPECT_LE(queue.GetPool().GetMostUsed(), kBound + threads * (kSize + 1000));
    EXPECT_EQ(queue.GetPool().GetUsed(), 0U);
  }
}

TEST(ChunkPoolTest, ReusesTheBestChunkAndKeepsLargeOnesForLater) {
  constexpr std::size_t kMiB = std::size_t{1} << 20;
  ChunkPool pool;
  Chunk large = pool.Take(40 * kMiB);
  Chunk middle = pool.Take(20 * kMiB);
  const unsigned char* const largePlace = large.mData.get();
  const unsigned char* const middlePlace = middle.mData.get();
  pool.Return(std::move(large));
  pool.Return(std::move(middle));
  middle = pool.Take(15 * kMiB);
  EXPECT_EQ(middle.mData.get(), middlePlace);
  pool.Return(std::move(middle));
  Chunk small = pool.Take(8 * kMiB);
  EXPECT_EQ(small.mCapacity, 8 * kMiB) << "would waste more than half of another one";
  large = pool.Take(36 * kMiB);
  EXPECT_EQ(large.mData.get(), largePlace);
  EXPECT_EQ(pool.GetUsed(), 48 * kMiB);
  EXPECT_EQ(pool.GetMostUsed(), 60 * kMiB);
}

TEST(ChunkPoolTest, BuffersOfBlocksAreSharedWhileSomebodyHoldsThem) {
  std::weak_ptr<ChunkPool> before;
  {
    const auto buffers = GetBlockBuffers();
    EXPECT_EQ(GetBlockBuffers(), buffers);
    before = buffers;
  }
  EXPECT_TRUE(before.expired());
}

}  // namespace
}  // namespace QovJbf
