#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>

#include "check/BlockVerdict.h"
#include "container/Descriptor.h"
#include "container/WorkerPool.h"

namespace Qov::Tools {

/// Decompresses blocks on worker threads before their verdicts are needed. The blocks can be of
/// several files. One thread calls all methods.
///
/// A block that is too large for the memory is decompressed alone. With one thread, blocks are
/// decompressed when they are taken.
class BlocksAhead {
 public:
  struct Block {
    std::shared_ptr<const QovJbf::Descriptor> mpFile;
    std::uint64_t mPosition = 0;
    std::uint32_t mSize = 0;

    bool operator==(const Block&) const = default;
  };

  BlocksAhead();
  BlocksAhead(const BlocksAhead&) = delete;
  BlocksAhead& operator=(const BlocksAhead&) = delete;

  /// Adds a block that is taken after the earlier ones.
  void Add(Block block);
  /// Starts to decompress blocks as far as there is memory.
  void Start();
  /// Returns the same as InflateWholeBlock for a block that was added. Drops the blocks before it.
  /// The content is of GetBlockBuffers().
  std::optional<WholeBlock> Take(const Block& block);
  /// Takes a content back.
  void Return(WholeBlock content);
  /// Called when the caller has dropped all contents that it took.
  void DropKept();

 private:
  struct Job {
    bool mIsDone = false;
    std::optional<WholeBlock> mContent;
  };
  struct Pending {
    Block mBlock;
    std::uint32_t mRawLength = 0;
    std::shared_ptr<Job> mpJob;  ///< Null if the block is not decompressed ahead.
  };
  /// Blocks, decompressed and compressed, that are in memory at a time, such as two of 60 MB. Those
  /// that were taken are counted until they are dropped.
  static constexpr std::uint64_t kMemory = std::uint64_t{152} << 20;
  static constexpr std::size_t kMostStarted = 64;

  void Start(Pending& next);
  void Run(const Block& block, Job& job);
  std::optional<WholeBlock> TakeFirst();
  void DropFirst();

  bool mHasWorkers;
  std::deque<Pending> mBlocks;
  std::size_t mNumPassed = 0;   ///< The first blocks of mBlocks, which are started or left out,
                                ///< because they cannot be decompressed as a whole.
  std::size_t mNumStarted = 0;  ///< Blocks with a job.
  std::mutex mMutex;            ///< Guards the jobs and mNumBytes.
  std::condition_variable mDone;
  std::uint64_t mNumBytes = 0;  ///< Bytes of the blocks with a job.
  std::uint64_t mNumKept = 0;   ///< Bytes that were taken and not dropped.
  std::shared_ptr<QovJbf::ChunkPool> mpBuffers;
  QovJbf::WorkerPool mWorkers;  ///< Last, because its tasks use the members above.
};

}  // namespace Qov::Tools
