#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

#include "MallocBuffer.h"
#include "Qov/Jbf/StreamReader.h"
#include "WorkerPool.h"

namespace QovJbf {

/// Verifies compressed blocks on worker threads, several at a time: decompresses them and compares
/// length and checksum. One thread calls all methods.
///
/// A block is decompressed as a whole (WholeBlock.h) while the blocks in memory need at most
/// kMostMemory bytes, and otherwise piece by piece with zlib, which is slower. A block that
/// libdeflate refuses is decompressed with zlib again, so errors are those of zlib.
class BlockChecks {
 public:
  static constexpr std::uint64_t kMostMemory = std::uint64_t{176} << 20;

  /// With fewer than two threads, Add verifies the block on the calling thread.
  explicit BlockChecks(unsigned threads);
  /// Drops the blocks that are not verified yet.
  ~BlockChecks();
  BlockChecks(const BlockChecks&) = delete;
  BlockChecks& operator=(const BlockChecks&) = delete;

  /// Begins to verify a block. Waits if there are too many. Raises the error of the first block
  /// that is damaged: the errors of StreamReader::Read, with the path of its file.
  void Add(StreamReader& reader, const StreamReader::BlockExtent& block);
  /// Waits until all blocks are verified. Raises the same errors.
  void Finish();

 private:
  struct Check;
  struct Buffer {
    MallocBuffer mData;
    std::uint64_t mCapacity = 0;
  };

  void FinishFirst();
  void Run(Check& check);
  bool MatchesAtOnce(const Check& check);
  int InflatePiecewise(const Check& check);
  Buffer TakeBuffer(std::uint64_t size);
  void ReturnBuffer(Buffer buffer);

  std::size_t mMostPending;
  std::deque<std::shared_ptr<Check>> mPending;
  std::mutex mMutex;  ///< Guards the results of the checks and the members below.
  std::condition_variable mDone;
  std::atomic<bool> mIsEnding = false;
  std::uint64_t mMemory = 0;  ///< Bytes of all buffers, in use or free.
  std::vector<Buffer> mFree;
  WorkerPool mWorkers;  ///< Last, because its tasks use the members before.
};

}  // namespace QovJbf
