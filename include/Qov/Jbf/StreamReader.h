#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Qov/Export.h"

namespace QovJbf {

/// A file that is read again later: its path and what it was when it was first seen.
/// At most a few dozen handles are open at once in the process; the least recently used ones are
/// closed and opened again when needed. A file that was exchanged in between raises ReadError.
class SourceFile;

/// Reads one stream of a container file without holding it in memory: it moves forward through
/// the compressed bytes and keeps a position and an inflater, a few tens of kilobytes in all.
///
/// Arrays read in stored order cost one inflation of the stream. Blocks that are passed over are
/// not inflated. Going back starts the block in question again; one in which reading goes to and
/// fro is kept in memory, as far as 256 MiB in all go. All readers of a process are used by one
/// thread: they share handles and that memory.
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
  /// bytes in the block") past the end, ReadError when the file gives less than it should,
  /// DamagedBlock when zlib refuses. A block is checked by its checksum when reading reaches its
  /// end or goes on to another one.
  void Read(std::uint64_t offset, void* target, std::size_t n);
  /// How many bytes were inflated only to come to those behind them, when blocks were begun.
  std::uint64_t GetNumInVain() const;
  /// Checks the block that was read last, whose end nothing may have been read from. Only then is
  /// it sure that all that was read is what was once written. Throws DamagedBlock if it is not.
  void Verify();

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

 private:
  struct State;
  std::unique_ptr<State> mpState;
};

}  // namespace QovJbf
