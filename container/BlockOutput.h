#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>
#include <span>

#include "CompressionQueue.h"
#include "Qov/Jbf/Block.h"

namespace QovJbf {

/// Blocks on their way to a file, by the position of their items. They are compressed in any
/// order and written in this one.
///
/// A block comes whole, or it is compressed while it fills. Of the first one nothing is kept: what
/// there is of it can be written at once, because no block before it will move it any more.
class BlockOutput {
 public:
  /// Of the blocks that fill here there will be `length` bytes, if that is known and not 0.
  BlockOutput(unsigned threads, std::uint64_t blockSize, std::uint64_t length);

  /// Takes a whole block over.
  void Add(std::uint64_t k, Block block, bool isCompressed);

  /// Where the next bytes of block `k` go, which is begun if it is not there yet. Empty while
  /// there is no memory for them: then something has to be written first.
  std::span<unsigned char> GetSpace(std::uint64_t k);
  /// `n` bytes of the space have been filled; true if that gave workers something to do.
  bool Advance(std::uint64_t k, std::size_t n);
  /// Block `k`, which may have no bytes, gets no more.
  void Finish(std::uint64_t k);
  /// Allows for blocks that exceed their usual size by `excess` bytes, as far as half of the free
  /// memory goes.
  void AllowExcess(std::uint64_t excess);

  bool IsEmpty() const { return mBlocks.empty(); }
  std::uint64_t GetFirst() const { return mBlocks.begin()->first; }
  /// True if nothing will be added to block `k`.
  bool IsWhole(std::uint64_t k) const { return mBlocks.at(k).mIsWhole; }
  /// True if any block is whole.
  bool HasWhole() const { return mNumWhole > 0; }
  /// Writes what there is of the first block, whose place is `position`; true if that was all of
  /// it that there will be.
  bool WriteFirst(std::FILE* file, std::uint64_t position);
  /// Forgets the first block, which is written; returns its size in the file.
  std::uint32_t RemoveFirst();
  /// Waits until there is more to write or to take in.
  void Wait() { mQueue.Wait(); }

 private:
  struct Entry {
    Block mPlain;                      ///< The content, if it is not compressed.
    CompressionQueue::JobHandle mJob;  ///< Else the work on it,
    bool mIsWhole = false;
    Chunk mFilling;              ///< the part of the content that is coming in,
    std::uint32_t mRawSize = 0;  ///< its length so far,
    std::optional<std::uint32_t> mWrittenRawSize;
    std::uint64_t mWritten = 0;  ///< and the bytes that are in the file.
  };

  Entry& GetEntry(std::uint64_t k);
  void SetWhole(Entry& entry);
  Chunk TakeChunk();
  void WriteChunk(Entry& entry, std::FILE* file, std::uint64_t position, const Chunk& chunk);
  void WriteRawSize(Entry& entry, std::FILE* file, std::uint64_t position);

  unsigned mThreads;
  std::uint64_t mMemory;
  std::uint64_t mMostMemory;
  CompressionQueue mQueue;
  std::size_t mNumWhole = 0;
  std::map<std::uint64_t, Entry> mBlocks;  ///< Gone before the queue, whose chunks they hold.
};

}  // namespace QovJbf
