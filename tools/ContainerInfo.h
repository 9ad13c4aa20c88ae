#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "container/ContainerFormat.h"

namespace Qov::Tools {

/// One physical block of a container file.
struct BlockInfo {
  std::uint64_t mNumber = 0;  ///< Its place in the index.
  std::string mStream;
  std::uint64_t mPosition = 0;  ///< Offset in the file.
  std::uint32_t mStored = 0;    ///< Bytes in the file.
  /// Uncompressed bytes, as the block says; nothing if the block is not all in the file.
  std::optional<std::uint32_t> mRaw;
  std::uint8_t mFlags = 0;

  /// Holds a piece of the index, and no stream.
  bool IsIndex() const { return QovJbf::IsReservedName(mStream); }
};

/// All blocks of one stream together.
struct StreamInfo {
  std::string mName;
  std::uint64_t mNumBlocks = 0;
  std::uint64_t mStored = 0;
  std::uint64_t mRaw = 0;  ///< Without meaning if there is trouble.
  std::string mTrouble;    ///< Why the stream cannot be read whole; empty if it can.
};

/// What a container file says of itself; no block is uncompressed for it but those of the index.
/// Names and troubles are not escaped.
struct ContainerInfo {
  std::string mVersion;
  std::uint64_t mFileSize = 0;
  std::vector<BlockInfo> mBlocks;    ///< Without slots that no stream uses.
  std::vector<StreamInfo> mStreams;  ///< In the order of their first blocks.
  std::string mTrouble;              ///< What put an end to the reading; empty if nothing did.

  std::uint64_t GetRawSize() const;
};

ContainerInfo ReadContainer(const std::string& path);

}  // namespace Qov::Tools
