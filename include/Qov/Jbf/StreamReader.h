#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Jbf/FileIdentity.h"

namespace QovJbf {

/// A file that is read again later: its path and what it was when it was first seen.
/// At most a few dozen handles are open at once in the process; the least recently used ones are
/// closed and opened again when needed. A file that changed in between raises ReadError.
class SourceFile;

/// Reads one stream of a container file without holding all of it in memory.
///
/// A compressed block ends with a checksum of its content, up to 4 GiB after the bytes that are
/// wanted. There are two ways to read:
///
///   ReadVerified   Returns bytes only after the checksum of every block that they lie in was
///                  compared. For values that are shown or handed on.
///   Read, Verify   Read returns bytes as they are decompressed; Verify compares the checksum of
///                  the block that was read last. For copies that count only once Verify has
///                  returned. Needs a few tens of kilobytes.
///
/// Blocks that are not compressed have no checksum: damage in them cannot be noticed.
///
/// Cost: Read decompresses a stream once if it is read in stored order, and nothing of the blocks
/// that it skips. ReadVerified does so too for blocks that fit in the cache of decompressed blocks,
/// which has 256 MiB for all readers of the process; larger blocks are decompressed at most twice,
/// to verify them and to read them. A block that was verified once is not verified again. Reading
/// backwards starts the block in question again, until that has cost a few times its length; then
/// the block is kept in the cache.
///
/// All readers of a process are used by one thread, because they share file handles and the cache.
class QOV_EXPORT StreamReader {
 public:
  /// Where a physical block lies in the file.
  struct StoredBlock {
    std::uint64_t mPosition;
    std::uint32_t mSize;
    bool mCompressed;
  };

  /// `blocks` in stream order. Reads the uncompressed length of each block (4 bytes a block).
  StreamReader(std::shared_ptr<SourceFile> source, std::vector<StoredBlock> blocks);
  ~StreamReader();
  StreamReader(const StreamReader&) = delete;
  StreamReader& operator=(const StreamReader&) = delete;

  /// Uncompressed bytes of the stream.
  std::uint64_t GetLength() const;
  /// Reads `n` bytes at `offset` of the uncompressed stream. Raises OutOfBounds ("Not enough
  /// bytes in the block") past the end, ReadError if the file is shorter than it was, DamagedBlock
  /// if zlib refuses a block. The checksum of a block is compared when reading reaches its end or
  /// moves on to another block; until then the bytes are not sure. An error of the block that was
  /// read before is raised again by every Read of another block.
  void Read(std::uint64_t offset, void* target, std::size_t n);
  /// Raises DamagedBlock if the block that Read read last does not match its checksum. After it
  /// has returned, all bytes that Read delivered are those that were written at their places in
  /// blocks, but only VerifyBefore tells whether the blocks are where their lengths say.
  void Verify();
  /// Returns the end of the bytes that Read delivered, the greatest offset if it went back.
  std::uint64_t GetEndOfReads() const;
  /// Reads as Read does, but verifies all blocks that the bytes lie in before it returns. Raises
  /// what Read raises. A block for which there is no memory is decompressed twice, and a damaged
  /// one only once.
  void ReadVerified(std::uint64_t offset, void* target, std::size_t n);
  /// Verifies all blocks before `offset`. A stored block says how long its content is; the offsets
  /// of later blocks depend on it, and only decompressing the block shows whether it is true.
  /// Raises DamagedBlock.
  void VerifyBefore(std::uint64_t offset);
  /// Returns how many bytes were decompressed only to reach those after them.
  std::uint64_t GetNumDiscarded() const;

  /// A physical block of the stream, to be copied as it lies in the file.
  struct BlockExtent {
    std::size_t mBlock;        ///< Its number in the stream.
    std::uint64_t mStart;      ///< Where its content begins in the uncompressed stream,
    std::uint32_t mRawLength;  ///< and how long that is.
    std::uint32_t mStoredSize;
    bool mCompressed;
    bool mIsLast;  ///< No other one follows it.
  };
  /// The block that holds all of the `n` bytes at `offset` of the uncompressed stream, if one does.
  std::optional<BlockExtent> FindBlock(std::uint64_t offset, std::uint64_t n) const;
  /// Reads `n` of the stored bytes of a block, from the one at `begin` on, as they lie in the file.
  /// Raises MismatchError if the length of the content is no longer what it was.
  void ReadStored(const BlockExtent& block, std::uint64_t begin, void* target, std::size_t n);

  /// True if `path` is the very file that this reads from (device and inode).
  bool ReadsFrom(const std::string& path) const;
  const std::string& GetPath() const;
  /// What the file was when it was first opened.
  const FileIdentity& GetIdentity() const;

 private:
  struct State;
  std::unique_ptr<State> mpState;
};

}  // namespace QovJbf
