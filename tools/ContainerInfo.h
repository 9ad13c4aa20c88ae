#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "container/ContainerFormat.h"

namespace Qov::Tools {

/// One physical block of a container file.
struct BlockInfo {
  std::uint64_t mNumber = 0;  ///< Position in the index.
  std::string mStream;
  std::uint64_t mPosition = 0;  ///< Offset in the file.
  std::uint32_t mStored = 0;    ///< Bytes in the file.
  /// Uncompressed bytes, as stored in the block; nothing if the file ends within the block.
  std::optional<std::uint32_t> mRaw;
  std::uint8_t mFlags = 0;

  /// Returns true for a part of the index.
  bool IsIndex() const { return QovJbf::IsReservedName(mStream); }
};

/// Totals of the blocks of a stream.
struct StreamInfo {
  std::string mName;
  std::uint64_t mNumBlocks = 0;
  std::uint64_t mStored = 0;
  std::uint64_t mRaw = 0;  ///< Undefined if mTrouble is not empty.
  std::string mTrouble;    ///< The reason why the stream cannot be read, or empty.
};

/// Index of a container file. Only the blocks of the index are decompressed. Names and mTrouble are
/// not escaped.
struct ContainerInfo {
  std::string mVersion;
  std::uint64_t mFileSize = 0;
  std::vector<BlockInfo> mBlocks;    ///< Without free slots.
  std::vector<StreamInfo> mStreams;  ///< In the order of their first blocks.
  std::string mTrouble;              ///< The error that stopped reading, or empty.

  std::uint64_t GetRawSize() const;
};

ContainerInfo ReadContainer(const std::string& path);

}  // namespace Qov::Tools
