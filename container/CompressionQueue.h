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
#include "Qov/Jbf/Compressor.h"
#include "WorkerPool.h"

namespace QovJbf {

/// Compresses blocks on worker threads, several blocks at a time, each block by one thread. One
/// thread calls all methods. Workers get only chunks.
///
/// Compressor::Fastest applies to blocks that are added whole (AddWhole); the others are compressed
/// with zlib while they arrive.
///
/// The caller bounds the memory: it takes a chunk to fill only while HasRoom() is true. The chunks
/// in use then exceed the bound at most by the output of each block that is being compressed: one
/// chunk, or the whole block with Compressor::Fastest.
///
/// If a worker fails, because of memory or zlib, the next TakeOutput or Wait raises
/// MemoryAllocationError.
class CompressionQueue {
 public:
  /// A block: the chunks of its content and of its compressed form.
  class Job;
  using JobHandle = std::shared_ptr<Job>;

  /// `memory` is the bound in bytes. With fewer than two threads, Add and Finish compress on the
  /// calling thread.
  CompressionQueue(unsigned threads, std::uint64_t memory, int level,
                   Compressor compressor = Compressor::Zlib);
  ~CompressionQueue();

  JobHandle Begin();
  /// Adds the next part of the content. All parts except the last one must have
  /// ChunkPool::kChunkSize bytes. The only part of a block can have any size. No part is empty.
  void Add(const JobHandle& job, Chunk part);
  /// Ends the content.
  void Finish(const JobHandle& job);
  /// Adds the whole content, which can have any size, and ends it.
  void AddWhole(const JobHandle& job, Chunk content);

  struct Output {
    std::vector<Chunk> mChunks;  ///< The caller returns them to the pool.
    bool mIsLast = false;        ///< True if the block is compressed completely.
  };
  /// Returns the compressed bytes since the last call.
  Output TakeOutput(Job& job);

  /// Returns false if `n` bytes more exceed the bound and workers have work, so that Wait helps.
  bool HasRoom(std::size_t n = ChunkPool::kChunkSize);
  /// Raises the bound to `memory` if that is larger.
  void RaiseBound(std::uint64_t memory);
  /// Waits until a worker has made progress. Returns at once if one has since the last call, or if
  /// there is no work.
  void Wait();
  ChunkPool& GetPool() { return mPool; }

 private:
  void Post(const JobHandle& job);
  void Run(Job& job);
  std::optional<Chunk> TakeInput(Job& job);
  void Compress(Job& job, Chunk part);
  void CompressWithZlib(Job& job, const Chunk& part);
  Chunk CompressAtOnce(const Chunk& content);
  void Deliver(Job& job, std::vector<Chunk> output);
  void RaiseIfFailed() const;

  const int mLevel;
  const Compressor mCompressor;
  ChunkPool mPool;
  std::mutex mMutex;
  std::condition_variable mProgress;
  std::uint64_t mBound;
  std::size_t mNumWaiting = 0;      ///< Number of steps that are queued or in work.
  std::uint64_t mNumDelivered = 0;  ///< Number of results that workers have delivered.
  std::uint64_t mNumSeen = 0;       ///< Value of mNumDelivered at the end of the last Wait.
  bool mHasFailed = false;
  std::atomic<bool> mIsEnding = false;
  WorkerPool
      mWorkers;  ///< Last, because it must be destroyed before the members that its tasks use.
};

}  // namespace QovJbf
