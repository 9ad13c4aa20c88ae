#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "Qov/Jbf/JbFile.h"
#include "check/BlocksAhead.h"
#include "check/FileBytes.h"
#include "check/Finding.h"
#include "check/StreamCursor.h"
#include "container/ReadAhead.h"

namespace Qov::Tools {

/// Checks a file as a container: its header, its index, and every block. Provides the streams for
/// the checks of their content.
class Container {
 public:
  /// Raises the errors of FileBytes, or FormatNotSupported for a file that is not a container.
  Container(const std::string& path, Findings& findings);

  /// Reads the list of blocks, and adds those that CheckBlocks decompresses to `ahead`. Returns
  /// false if the list cannot be read.
  bool ListBlocks(BlocksAhead& ahead);
  /// Checks the listed blocks. Returns false if the streams cannot be read.
  bool CheckBlocks(BlocksAhead& ahead);
  /// Opens the streams of a file that the programs can load, without checking its blocks. Returns
  /// false if the file is unfinished.
  bool OpenUnchecked();
  /// Returns true if the save of a container did not end, because its index, which is written last,
  /// is missing. Reads only the header and the index.
  static bool IsUnfinished(const std::string& path);

  const std::string& GetVersion() const { return mVersion; }
  /// Returns true if tree records contain 64-bit offsets.
  bool HasWideOffsets() const { return mHasWideOffsets; }
  bool HasStream(const std::string& name) const { return FindStream(name) != nullptr; }
  /// Reports streams that readers keep in memory and that decompress to more than the limit of
  /// the readers. Returns true if they do.
  bool ReportExpansion(std::initializer_list<std::string> streams);
  /// Returns blocks of the heavy stream that CheckBlocks has decompressed. The caller may take
  /// them.
  QovJbf::ReadAhead::Contents& GetHeavyContents() { return mHeavyContents; }
  /// Drops those that are left.
  void DropHeavyContents();
  /// Returns a cursor over the stream; over no bytes if the stream is missing.
  StreamCursor OpenStream(const std::string& name);

 private:
  struct Stream {
    std::string mName;
    std::uint64_t mLength = 0;  ///< Uncompressed bytes, as stored in its blocks.
    std::uint64_t mSound = 0;   ///< Readable bytes from the beginning.
    bool mIsDamaged = false;
    bool mIsRefused = false;  ///< True if readers refuse the whole stream.
  };
  struct StoredBlock {
    std::uint32_t mStream = 0;
    std::uint32_t mSize = 0;
    std::uint8_t mFlags = 0;
  };

  const Stream* FindStream(const std::string& name) const;
  bool CheckHeader();
  void CheckVersion();
  bool ReadIndex();
  bool ReadRoot();
  bool ReadIndexBlock(std::size_t k, std::uint64_t position);
  bool TakeIndexBlock(std::size_t k, std::uint64_t position, QovJbf::Block& items);
  bool AppendItems(QovJbf::Block& items, const Place& place);
  void AppendItem(const QovJbf::IndexItem& item);
  void CheckItem(const QovJbf::IndexItem& item);
  Place AtBlock(std::size_t k, std::uint64_t position) const;
  bool IsInflated(const StoredBlock& block, std::uint64_t position) const;
  BlocksAhead::Block GetBlock(const StoredBlock& block, std::uint64_t position) const;
  void CheckBlock(std::size_t k, std::uint64_t position, BlocksAhead& ahead);
  BlockVerdict Inflate(const StoredBlock& block, std::uint64_t position, BlocksAhead& ahead);
  void CheckEnd(std::uint64_t end);
  void CheckStreamNames();
  void Damage(Stream& stream, const std::string& code, const Place& place, std::string text);
  bool OpenForReading();
  Findings& mFindings;
  std::string mPath;
  FileBytes mBytes;
  QovJbf::JbFile mFile;
  std::string mVersion;
  bool mHasWideOffsets = true;
  std::vector<StoredBlock> mBlocks;
  std::vector<Stream> mStreams;
  std::unordered_map<std::string, std::uint32_t> mStreamsByName;
  std::uint64_t mFirstBlock = 0;
  QovJbf::ReadAhead::Contents mHeavyContents;
  std::uint64_t mNumHeavyBytes = 0;  ///< Bytes of these blocks.
};

}  // namespace Qov::Tools
