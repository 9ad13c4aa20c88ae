#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace QovJbf {

/// A file that is read again later: its path and what it was when it was first seen.
/// At most a few dozen handles are open at once in the process; the least recently used ones are
/// closed and opened again when needed. A file that was exchanged in between raises ReadError.
class SourceFile;

/// Reads one stream of a container file without holding it in memory: it moves forward through
/// the compressed bytes and keeps a position and an inflater, a few tens of kilobytes in all.
///
/// Arrays read in stored order cost one inflation of the stream. Blocks that are passed over are
/// not inflated. Going back starts the block in question again.
class StreamReader {
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
  /// Checks the block that was read last, whose end nothing may have been read from. Only then is
  /// it sure that all that was read is what was once written. Throws DamagedBlock if it is not.
  void Verify();

  /// True if `path` is the very file that this reads from (device and inode).
  bool ReadsFrom(const std::string& path) const;
  const std::string& GetPath() const;

 private:
  struct State;
  std::unique_ptr<State> mpState;
};

}  // namespace QovJbf
