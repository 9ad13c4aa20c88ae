#include <gtest/gtest.h>

#include <atomic>

#include "ContainerSupport.h"
#include "Qov/Jbf/BlockZlibCompressor.h"
#include "container/CompressionQueue.h"

namespace QovJbf {
namespace {

using namespace Qov::Test;

constexpr std::size_t kChunk = ChunkPool::kChunkSize;
constexpr std::uint64_t kPlenty = 1000 * kChunk;
constexpr int kLevel = 6;

TEST(WorkerPoolTest, RunsEveryTaskOnceWhateverTheNumberOfThreads) {
  for (const unsigned threads : {0U, 1U, 2U, 8U}) {
    std::atomic<int> sum = 0;
    std::atomic<int> elsewhere = 0;
    const auto owner = std::this_thread::get_id();
    {
      WorkerPool pool(threads);
      for (int i = 1; i <= 100; ++i) {
        pool.Post([&, i] {
          sum += i;
          if (std::this_thread::get_id() != owner) ++elsewhere;
        });
      }
      while (sum < 5050) std::this_thread::yield();
    }
    EXPECT_EQ(sum, 5050);
    EXPECT_EQ(elsewhere, threads > 1 ? 100 : 0);
  }
}

std::string CompressedAtOnce(const std::string& content) {
  Block block = BlockOf(content);
  BlockZlibCompressor{kLevel}(block);
  return ContentOf(block).substr(4);
}

/// Content on its way through a queue, chunk by chunk.
class Passage {
 public:
  Passage(CompressionQueue& queue, std::string content)
      : mQueue(queue), mContent(std::move(content)), mJob(queue.Begin()) {}

  /// Adds the next chunk, or ends the block; false if it had ended.
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

  /// Takes what is there; true if that was the end.
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

/// Incompressible, hardly so, and well, in turn.
std::string MixedBytes(std::size_t n, unsigned seed) {
  std::mt19937 random(seed);
  std::string bytes(n, '\0');
  for (std::size_t i = 0; i < n; ++i) {
    const unsigned kind = static_cast<unsigned>(i / 40000) % 3;
    bytes[i] = static_cast<char>(kind == 0 ? random() : kind == 1 ? random() % 20 : i / 100);
  }
  return bytes;
}

TEST(CompressionQueueTest, GivesWhatOneCallGivesForBlocksSideBySide) {
  const std::vector<std::size_t> sizes = {0,          1,          kChunk - 1,     kChunk,
                                          kChunk + 1, 2 * kChunk, 5 * kChunk + 7, 300};
  std::vector<std::string> contents;
  std::vector<std::string> expected;
  for (const std::size_t size : sizes) {
    contents.push_back(MixedBytes(size, static_cast<unsigned>(size)));
    expected.push_back(CompressedAtOnce(contents.back()));
  }
  for (const unsigned threads : {1U, 2U, 3U}) {
    CompressionQueue queue(threads, kPlenty, kLevel);
    std::vector<Passage> passages;
    for (const std::string& content : contents) passages.emplace_back(queue, content);
    for (bool isMore = true; isMore;) {
      isMore = false;
      for (Passage& passage : passages) isMore = passage.Add() || isMore;
    }
    for (std::size_t i = 0; i < passages.size(); ++i) {
      passages[i].TakeAll();
      EXPECT_EQ(passages[i].GetCompressed(), expected[i]) << sizes[i] << " on " << threads;
    }
    EXPECT_EQ(queue.GetPool().GetUsed(), 0U);
  }
}

TEST(CompressionQueueTest, TakesAWholeBlockAsOnePart) {
  const std::string content = MixedBytes(3 * kChunk + 5, 1);
  CompressionQueue queue(2, 0, kLevel);
  const CompressionQueue::JobHandle job = queue.Begin();
  Block block = BlockOf(content);
  queue.Add(job, Chunk(MallocBuffer(block.Detach()), 0, content.size()));
  queue.Finish(job);
  std::string compressed;
  for (bool isLast = false; !isLast; queue.Wait()) {
    CompressionQueue::Output output = queue.TakeOutput(*job);
    isLast = output.mIsLast;
    for (const Chunk& chunk : output.mChunks) {
      compressed.append(reinterpret_cast<const char*>(chunk.mData.get()), chunk.mSize);
    }
  }
  EXPECT_EQ(compressed, CompressedAtOnce(content));
}

TEST(CompressionQueueTest, KeepsWithinItsMemory) {
  for (const unsigned threads : {1U, 2U, 4U}) {
    const std::uint64_t bound = 12 * kChunk;
    CompressionQueue queue(threads, bound, kLevel);
    std::deque<Passage> passages;
    for (unsigned i = 0; i < 8; ++i) {
      passages.emplace_back(queue, MixedBytes(9 * kChunk, i));
      do {
        while (passages.size() > 1 && passages.front().Take()) passages.pop_front();
        while (!queue.HasRoom()) {
          queue.Wait();
          while (passages.size() > 1 && passages.front().Take()) passages.pop_front();
          if (passages.size() == 1) passages.front().Take();
        }
      } while (passages.back().Add());
    }
    for (Passage& passage : passages) passage.TakeAll();
    EXPECT_LE(queue.GetPool().GetMostUsed(), bound + threads * kChunk);
    EXPECT_EQ(queue.GetPool().GetUsed(), 0U);
  }
}

TEST(CompressionQueueTest, RaisesWhatAWorkerMet) {
  constexpr int kNoLevel = 42;
  for (const unsigned threads : {1U, 2U}) {
    CompressionQueue queue(threads, kPlenty, kNoLevel);
    Passage passage(queue, "content");
    passage.Add();
    ExpectError(ErrorType::MemoryAllocationError, "Memory Allocation Error",
                [&] { passage.TakeAll(); });
    EXPECT_TRUE(queue.HasRoom()) << "nobody must wait for what will not come";
    ExpectError(ErrorType::MemoryAllocationError, "", [&] { queue.Wait(); });
  }
}

TEST(CompressionQueueTest, CanBeLeftInTheMiddle) {
  for (const unsigned threads : {1U, 2U, 5U}) {
    CompressionQueue queue(threads, kPlenty, kLevel);
    std::vector<Passage> passages;
    for (unsigned i = 0; i < 10; ++i) passages.emplace_back(queue, MixedBytes(6 * kChunk, i));
    for (Passage& passage : passages) {
      while (passage.Add() && threads > 1) {
      }
    }
  }
}

}  // namespace
}  // namespace QovJbf
