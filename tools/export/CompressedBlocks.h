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
#include "export/SpilledBytes.h"

namespace Qov::Tools {

/// Writes arrays as the appended data of VTK's XML files hold them, one after another:
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
  enum class Order {
    OneByOne,    ///< An array ends before the next one begins.
    Interleaved  ///< Several arrays grow at the same time; their blocks wait in a temporary file.
  };
  class Array;
  using ArrayPtr = std::shared_ptr<Array>;

  /// Writes an attribute "offset" with room for its number. Returns the position to pass to Begin.
  static std::uint64_t WriteOffset(SafeOutput& output);

  /// Offsets count from the current position of `output`.
  CompressedBlocks(SafeOutput& output, Order order);
  ~CompressedBlocks();

  /// Begins an array of `size` bytes. Its offset is written at a position that WriteOffset
  /// returned.
  ArrayPtr Begin(std::uint64_t size, std::uint64_t offsetPosition);
  void Append(const ArrayPtr& array, const void* data, std::size_t size);
  /// Ends the array. Raises MismatchError if it has more or less than its number of bytes.
  void End(const ArrayPtr& array);
  /// Writes everything that is not written yet, in the order in which the arrays began. Raises
  /// WriteError, and MemoryAllocationError.
  void Finish();

 private:
  struct Job;
  void Push(std::shared_ptr<Job> job);
  void PostBlock(const ArrayPtr& array);
  void WriteFirst();
  void WriteBlock(Job& job);
  void WriteHeader(Array& array);
  void CopyBlocks(const Array& array);

  SafeOutput& mOutput;
  std::uint64_t mStart;
  std::unique_ptr<SpilledBytes> mpSpilled;  ///< Null if arrays come one by one.
  std::vector<ArrayPtr> mArrays;            ///< All of them if blocks are spilled, else none.
  std::mutex mMutex;
  std::condition_variable mDone;
  std::deque<std::shared_ptr<Job>> mJobs;
  std::size_t mMostJobs;
  QovJbf::WorkerPool mWorkers;  // the last member: its threads use the others
};

}  // namespace Qov::Tools
