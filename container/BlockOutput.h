#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>
#include <span>

#include "CompressionQueue.h"
#include "Qov/Jbf/Block.h"
#include "Qov/Jbf/Index.h"

namespace QovJbf {

/// Blocks that are being compressed and written. They are compressed in any order and written in
/// the order of their items.
///
/// A block is added whole, or it is compressed while it fills. The compressed bytes of the first
/// block can be written at once, because its position is known. With Compressor::Fastest, a block
/// that fills is collected in one chunk and compressed when it is whole. If it becomes larger than
/// WriteSettings::mMostAtOnce, it is compressed with zlib while it fills further.
class BlockOutput {
 public:
  /// `length` is the number of bytes of the blocks that fill, 0 if it is not known.
  BlockOutput(unsigned threads, std::uint64_t blockSize, std::uint64_t length,
              const WriteSettings& settings);

  /// Adds a whole block.
  void Add(std::uint64_t k, Block block, bool isCompressed);

  /// Returns memory for the next bytes of block `k`, which is added if it does not exist and gets
  /// at least `n` bytes more. Returns an empty span if there is no memory; compressed bytes have to
  /// be written first then.
  std::span<unsigned char> GetSpace(std::uint64_t k, std::uint64_t n);
  /// Adds the first `n` bytes of the memory from GetSpace to block `k`. Returns true if a chunk was
  /// passed to the workers.
  bool Advance(std::uint64_t k, std::size_t n);
  /// Makes block `k` whole: it gets no more bytes. It can be empty.
  void Finish(std::uint64_t k);
  /// Uses more memory for blocks that exceed the block size by `excess` bytes, at most half of the
  /// free memory.
  void AllowExcess(std::uint64_t excess);

  bool IsEmpty() const { return mBlocks.empty(); }
  std::uint64_t GetFirst() const { return mBlocks.begin()->first; }
  /// Returns true if block `k` gets no more bytes.
  bool IsWhole(std::uint64_t k) const { return mBlocks.at(k).mIsWhole; }
  /// Returns true if any block is whole.
  bool HasWhole() const { return mNumWhole > 0; }
  /// Writes the available bytes of the first block at `position`. Returns true if the block is
  /// written completely.
  bool WriteFirst(std::FILE* file, std::uint64_t position);
  /// Removes the first block after it was written completely. Returns its size in the file.
  std::uint32_t RemoveFirst();
  /// Waits until a worker has made progress.
  void Wait() { mQueue.Wait(); }

 private:
  struct Entry {
    Block mPlain;                      ///< The content of a block that is not compressed.
    CompressionQueue::JobHandle mJob;  ///< The compression of any other block.
    bool mIsWhole = false;
    bool mIsStreamed = false;    ///< True if parts of it are compressed before it is whole.
    Chunk mFilling;              ///< The chunk that is being filled.
    std::uint32_t mRawSize = 0;  ///< Present length of the content.
    std::optional<std::uint32_t> mWrittenRawSize;
    std::uint64_t mWritten = 0;  ///< Number of bytes in the file.
  };

  Entry& GetEntry(std::uint64_t k);
  void SetWhole(Entry& entry);
  bool MakeSpace(Entry& entry, std::uint64_t n);
  bool Collect(Entry& entry, std::uint64_t n);
  void FinishJob(Entry& entry, Chunk part);
  void WriteChunk(Entry& entry, std::FILE* file, std::uint64_t position, const Chunk& chunk);
  void WriteRawSize(Entry& entry, std::FILE* file, std::uint64_t position);

  unsigned mThreads;
  std::uint64_t mBlockSize;
  Compressor mCompressor;
  std::uint64_t mMostAtOnce;  ///< A multiple of the size of a chunk.
  std::uint64_t mMemory;
  std::uint64_t mMostMemory;
  CompressionQueue mQueue;
  std::size_t mNumWhole = 0;
  std::map<std::uint64_t, Entry> mBlocks;  ///< After mQueue, because they hold its chunks.
};

}  // namespace QovJbf
