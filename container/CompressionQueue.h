#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "ChunkPool.h"
#include "WorkerPool.h"

namespace QovJbf {

/// Compresses blocks on worker threads, each block by one thread at a time and several blocks side
/// by side. All methods belong to one thread, the owner's; only chunks cross to the workers.
///
/// Memory is bounded from the filling side: whoever fills blocks takes a chunk only while
/// HasRoom(). The chunks in use then never exceed the bound by more than the chunks that blocks
/// in work are just writing into, one a block.
///
/// An error of a worker, of memory or of zlib, is raised as MemoryAllocationError by the next
/// TakeOutput or Wait.
class CompressionQueue {
 public:
  /// One block: its chunks on the way in and on the way out.
  class Job;
  using JobHandle = std::shared_ptr<Job>;

  /// `memory` is the bound in bytes. With fewer than two threads nothing runs in parallel: Add
  /// and Finish do the work themselves.
  CompressionQueue(unsigned threads, std::uint64_t memory, int level);
  ~CompressionQueue();

  JobHandle Begin();
  /// Hands over the next part of the content: exactly ChunkPool::kChunkSize bytes, except for
  /// the last part. Any size will do for a part that is the only one. No part is empty.
  void Add(const JobHandle& job, Chunk part);
  /// There is no more to add.
  void Finish(const JobHandle& job);

  struct Output {
    std::vector<Chunk> mChunks;  ///< To be returned to the pool.
    bool mIsLast = false;        ///< Nothing comes after them.
  };
  /// The compressed bytes since the last call.
  Output TakeOutput(Job& job);

  /// False while waiting would help: the bound is reached and workers have something to do.
  bool HasRoom();
  /// Lets a larger bound hold from now on.
  void RaiseBound(std::uint64_t memory);
  /// Waits until workers made something of what they have; returns at once if they did since the
  /// last call, or if they have nothing.
  void Wait();
  ChunkPool& GetPool() { return mPool; }

 private:
  void Post(const JobHandle& job);
  void Run(Job& job);
  std::optional<Chunk> TakeInput(Job& job);
  void Compress(Job& job, Chunk part);
  void Deliver(Job& job, std::vector<Chunk> output);
  void RaiseIfFailed() const;

  const int mLevel;
  ChunkPool mPool;
  std::mutex mMutex;
  std::condition_variable mProgress;
  std::uint64_t mBound;
  std::size_t mNumWaiting = 0;      ///< Steps that workers have before them or in work.
  std::uint64_t mNumDelivered = 0;  ///< Grows with what workers do.
  std::uint64_t mNumSeen = 0;       ///< mNumDelivered at the end of the last Wait.
  bool mHasFailed = false;
  std::atomic<bool> mIsEnding = false;
  WorkerPool mWorkers;  ///< The last member: it is gone before what its tasks use.
};

}  // namespace QovJbf
