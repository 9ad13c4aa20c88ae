#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Jbf/FileIdentity.h"

namespace QovJbf {

class ReadAhead;
class SourceFile;

/// Reads one stream of a container file without holding all of it in memory.
///
/// A compressed block ends with a checksum of its content, up to 4 GiB after the requested bytes.
/// There are two ways to read:
///
///   ReadVerified   Returns bytes only after the checksums of their blocks were compared. For
///   values
///                  that are shown or passed on.
///   Read, Verify   Read returns bytes as they are decompressed. Verify compares the checksum of
///   the
///                  block that was read last. For copies that are used only after Verify has
///                  returned. Takes a few tens of kilobytes of memory.
///
/// Blocks that are not compressed have no checksum, so damage in them is not detected.
///
/// Cost: Read decompresses a stream once if it is read in stored order. It does not decompress
/// blocks that are skipped. The same holds for ReadVerified if a block fits in the cache of
/// decompressed blocks, which has 256 MiB for all readers of the process. Larger blocks are
/// decompressed at most twice, to verify and to read them. A block is verified only once. Reading
/// backwards decompresses the block from its start again. When this has cost a few times the length
/// of the block, the block is cached.
///
/// All readers of a process must be used by one thread, because they share file handles and the
/// cache. A file that has changed since it was opened raises ReadError.
class QOV_EXPORT StreamReader {
 public:
  /// The place of a block in the file.
  struct StoredBlock {
    std::uint64_t mPosition;
    std::uint32_t mSize;
    bool mCompressed;
  };

  /// Reads the uncompressed length of each block. `blocks` are in the order of the stream.
  StreamReader(std::shared_ptr<SourceFile> source, std::vector<StoredBlock> blocks);
  ~StreamReader();
  StreamReader(const StreamReader&) = delete;
  StreamReader& operator=(const StreamReader&) = delete;

  /// Returns the number of uncompressed bytes.
  std::uint64_t GetLength() const;
  /// Reads `n` bytes at `offset` of the uncompressed stream. Raises OutOfBounds ("Not enough bytes
  /// in the block") past the end, ReadError if the file is shorter than before, and DamagedBlock if
  /// zlib refuses a block. Compares the checksum of a block when reading reaches its end or
  /// continues in another block; until then the bytes are not verified. An error of the block that
  /// was read before is raised by each Read of another block.
  void Read(std::uint64_t offset, void* target, std::size_t n);
  /// Raises DamagedBlock if the block that was read last does not match its checksum. After it has
  /// returned, all bytes that Read returned are as written in their blocks. VerifyBefore verifies
  /// the offsets of the blocks.
  void Verify();
  /// Returns the greatest end of the bytes that Read returned.
  std::uint64_t GetEndOfReads() const;
  /// Reads like Read, but verifies the blocks of the bytes before it returns. Raises the same
  /// errors. Decompresses a block twice if there is not enough memory for it. Decompresses a
  /// damaged block only once.
  void ReadVerified(std::uint64_t offset, void* target, std::size_t n);
  /// Verifies all blocks before `offset`, because the offsets of later blocks depend on the stored
  /// lengths of their contents. Raises DamagedBlock.
  void VerifyBefore(std::uint64_t offset);
  /// Returns the number of bytes that were decompressed only to reach bytes after them.
  std::uint64_t GetNumDiscarded() const;

  /// A block of the stream that can be copied in its stored form.
  struct BlockExtent {
    std::size_t mBlock;        ///< Number of the block in the stream.
    std::uint64_t mStart;      ///< Offset of the content in the uncompressed stream.
    std::uint32_t mRawLength;  ///< Length of the content.
    std::uint32_t mStoredSize;
    bool mCompressed;
    bool mIsLast;  ///< True for the last block of the stream.
  };
  /// Returns the block that holds all `n` bytes at `offset` of the uncompressed stream, if there is
  /// one.
  std::optional<BlockExtent> FindBlock(std::uint64_t offset, std::uint64_t n) const;
  /// Reads `n` stored bytes of a block at offset `begin`, without decompression. Raises
  /// MismatchError if the stored length of the content has changed.
  void ReadStored(const BlockExtent& block, std::uint64_t begin, void* target, std::size_t n);

  /// Writes the stored bytes of a block to `target` at `position`, without decompression. The file
  /// system copies them if it can. Raises the errors of ReadStored, and WriteError.
  void CopyStored(const BlockExtent& block, std::FILE* target, std::uint64_t position);
  /// Returns the position of the stored bytes of a block in the file.
  std::uint64_t GetPosition(const BlockExtent& block) const;
  /// Returns a new descriptor of the file, which the caller closes and other threads may read with
  /// pread. Raises ReadError if the process has no handles left.
  int OpenDescriptor() const;
  /// Notes that the block was verified elsewhere. Counts as reading it for GetEndOfReads.
  void SetVerified(const BlockExtent& block);

  /// Returns true if `path` leads to the file that this reads (device and inode).
  bool ReadsFrom(const std::string& path) const;
  const std::string& GetPath() const;
  /// Returns the identity that the file had when it was first opened.
  const FileIdentity& GetIdentity() const;

 private:
  struct State;
  std::unique_ptr<State> mpState;
};

}  // namespace QovJbf
