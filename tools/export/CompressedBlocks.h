#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "SafeOutput.h"
#include "container/WorkerPool.h"

namespace Qov::Tools {

/// Writes an array as the appended data of VTK's XML files hold it:
///
///   number of blocks: u64
///   length of a block: u64          before compression
///   length of the last block: u64   0 if it is full
///   compressed length: u64          for each block
///   blocks                          each a zlib stream
///
/// Blocks are compressed on several threads; the bytes do not depend on their number.
class CompressedBlocks {
 public:
  explicit CompressedBlocks(SafeOutput& output);
  ~CompressedBlocks();

  /// Begins an array of `size` bytes.
  void Begin(std::uint64_t size);
  void Append(const void* data, std::size_t size);
  /// Ends the array, which must have all its bytes. Raises WriteError, and MemoryAllocationError.
  void End();

 private:
  struct Job {
    std::vector<unsigned char> mInput;
    std::vector<unsigned char> mOutput;
    bool mIsDone = false;
    bool mHasFailed = false;
  };
  void PostBlock();
  void WriteFirst();

  SafeOutput& mOutput;
  std::uint64_t mHeaderPosition = 0;
  std::uint64_t mSize = 0;
  std::vector<std::uint64_t> mCompressedSizes;
  std::vector<unsigned char> mBlock;
  std::mutex mMutex;
  std::condition_variable mDone;
  std::deque<std::shared_ptr<Job>> mJobs;
  std::size_t mMostJobs;
  QovJbf::WorkerPool mWorkers;  // the last member: its threads use the others
};

}  // namespace Qov::Tools
