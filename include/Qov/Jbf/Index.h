#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Jbf/Block.h"
#include "Qov/Jbf/BlockIo.h"
#include "Qov/Jbf/Compressor.h"
#include "Qov/Jbf/IndexItem.h"
#include "Qov/Jbf/StreamReader.h"

namespace QovJbf {

/// The blocks of one stream.
struct BlockSizeLimiter {
  std::vector<std::uint64_t> mBlocks;  ///< Indices of their items, in the order of the stream.
  std::uint32_t mLimit = 0;            ///< A block of this size or more gets no more bytes.
};

/// The settings with which the blocks of a file are written. The bytes do not depend on the number
/// of threads.
struct WriteSettings {
  int mLevel = 6;                 ///< Compression level, from 1 to 9.
  std::uint32_t mBlockLimit = 0;  ///< Limit of every stream; 0 for the default.
  /// The default limit if TELMORAX_MAX_RYX_BLOCK_SIZE is not set; 0 for 200 MiB.
  std::uint32_t mUsualBlockLimit = 0;
  unsigned mThreads = 0;  ///< Threads that compress; 0 for the default of Index.
  Compressor mCompressor = Compressor::Zlib;
  /// The largest block, in bytes, that Compressor::Fastest compresses with libdeflate.
  std::uint32_t mMostAtOnce = 128U << 20;
  /// Lets the disk begin with each block when it is written, because the file is flushed at the
  /// end.
  bool mStartsWriteback = false;
};

/// The streams of one container file.
///
/// A stream is a sequence of blocks. A new block is added when the last one has reached the limit
/// of the stream, which is set when the stream is created: TELMORAX_MAX_RYX_BLOCK_SIZE (decimal, at
/// most 4294967294 bytes), else 200 MiB. One Put is never split, so a block can exceed the limit.
/// A parameter `k` is the index of the item of a block.
///
/// Blocks are compressed by several threads and written in the order of their items. The bytes of
/// the file do not depend on the number of threads. RYXMERGE_THREADS sets that number; with 1, no
/// thread is started. Without the variable, it follows from the number of processors and the
/// available memory.
///
/// Errors have the source "include/Qov/Jbf/Index".
class QOV_EXPORT Index {
 public:
  /// Writes the next `n` bytes of a value to `target`.
  using PieceSource = std::function<void(void* target, std::size_t n)>;

  Index();
  ~Index();
  Index(Index&&) noexcept;
  Index& operator=(Index&&) noexcept;

  /// Appends a block to `name` and returns its index.
  std::uint64_t CreateBlock(const std::string& name);
  /// Appends `n` free items. Returns the stored size of a list of `n` items.
  std::uint64_t CreateEmptyBlocks(std::uint64_t n);
  /// Returns the block that the next bytes of `name` are put into. Adds a block if necessary.
  std::uint64_t GetWritingBlockIndex(const std::string& name);
  /// Returns the block in memory that the next bytes of `name` are read from. Raises
  /// ElementNotFound if the stream does not exist or is exhausted.
  std::uint64_t GetReadingBlockIndex(const std::string& name);
  /// Loads blocks from `file` if necessary. Returns the last block of an exhausted stream.
  std::uint64_t GetReadingBlockIndex(const std::string& name, std::FILE* file);
  /// Raises ElementNotFound if the stream does not exist.
  BlockSizeLimiter& GetBlockSizeLimiter(const std::string& name);
  bool HasStream(const std::string& name) const;

  /// Appends raw bytes. Raises ElementNotFound if the last block is frozen.
  void Put(const std::string& name, const void* source, std::uint64_t n);
  /// Appends an encoded value. Raises MiscellaneousError if the last block is frozen.
  template <class T>
  void Put(const std::string& name, const T& value) {
    const std::uint64_t k = GetOpenBlock(name);
    CopyToBlock(GetBlock(k), value);
    FinishValue(k);
  }
  /// Appends `n` raw bytes that `source` delivers in pieces. If `source` throws, the stream keeps
  /// the pieces before.
  void Put(const std::string& name, std::uint64_t n, const PieceSource& source);
  /// Appends a block of `reader`, which must outlive the next call of FinishChecks, in its stored
  /// form and writes it to `file` at once. With `check`, threads compare a compressed block with
  /// its length and checksum meanwhile; if a block is damaged, a later call of this or FinishChecks
  /// raises the error of StreamReader::Read. Raises NotImplemented if a block before it is not
  /// complete.
  void PutStoredBlock(const std::string& name, StreamReader& reader,
                      const StreamReader::BlockExtent& block, bool check, std::FILE* file);
  /// Waits until the blocks of PutStoredBlock are checked.
  void FinishChecks();
  /// Reads raw bytes. Leaves `target` as it is if the stream does not exist or is exhausted.
  void Get(const std::string& name, void* target, std::uint64_t n);
  void Get(const std::string& name, void* target, std::uint64_t n, std::FILE* file);

  /// Returns the number of uncompressed bytes put into `name`. Raises ElementNotFound if the stream
  /// does not exist.
  std::uint64_t GetStreamLength(const std::string& name) const;
  /// Sets flags on all present blocks of `name` that are not frozen.
  void AddFlags(const std::string& name, std::uint8_t flags);
  /// Sets the reading position of `name` to byte `offset` of the uncompressed stream, at most to
  /// its end. Does not decompress the blocks before. Creates the stream if it does not exist.
  /// `file` may be null if all blocks are in memory.
  void SetStreamPosition(const std::string& name, std::uint64_t offset, std::FILE* file);

  /// Makes new blocks of `name` streamed: they are compressed while they fill, and written to
  /// `file` as soon as their position is known. This takes little memory for blocks of any size.
  /// The bytes cannot be read back through this object. `expectedLength` is the number of bytes to
  /// come, 0 if it is not known; it is used to plan the memory.
  void StreamToFile(const std::string& name, std::FILE* file, std::uint64_t expectedLength = 0);
  /// Discards blocks that are not written yet. Must be called before the file is closed.
  void StopWriting();
  /// Must be called before anything is written.
  void SetWriting(const WriteSettings& settings);
  /// Sets the maximum number of threads that compress. Must be called before anything is written.
  void LimitThreads(unsigned most);
  /// Returns the number of threads that have compressed, 1 if it was only the calling thread.
  unsigned GetNumThreads() const;
  void WriteBufferToFileStream(std::uint64_t k, std::FILE* file);
  void WriteIndexBufferToFileStream(std::uint64_t k, std::FILE* file);
  /// Writes all blocks that are not written yet, and the index.
  void WriteAllBuffersToFileStream(std::FILE* file);
  /// Writes the full blocks that have the flag kFreezeWhenFull, in the order of their items, and
  /// frees their memory. Raises NotImplemented if a block before them is not complete.
  void FlushFrozen(std::FILE* file);
  /// Reads the root index of `length` bytes at the current position of `file`, and the index blocks
  /// that it lists. Replaces the whole content of this object. After an error, the content is as
  /// before.
  void ReadIndexBufferFromFileStream(std::FILE* file, std::uint32_t length);

  const std::vector<IndexItem>& GetItems() const;
  const Block& GetBlock(std::uint64_t k) const;
  Block& GetBlock(std::uint64_t k);
  /// Returns true if the block is written, or about to be written, and cannot change any more.
  bool IsFrozen(std::uint64_t k) const;
  /// Returns the offset of the block in the file.
  std::uint64_t GetPosition(std::uint64_t k);

 private:
  struct State;

  std::uint64_t GetOpenBlock(const std::string& name);
  void FinishValue(std::uint64_t k);

  std::unique_ptr<State> mpState;
};

}  // namespace QovJbf
