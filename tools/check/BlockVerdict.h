#pragma once

#include <cstdint>
#include <string>

#include "Qov/Jbf/Block.h"
#include "check/FileBytes.h"

namespace Qov::Tools {

/// What inflating a compressed block from its beginning to its end showed.
struct BlockVerdict {
  std::uint32_t mRawLength = 0;  ///< As the block says.
  /// No zlib stream of the block's size can have that length: readers refuse the whole stream.
  bool mIsImpossible = false;
  std::string mTrouble;            ///< A sentence; empty if the block is as it should be.
  std::uint32_t mNumTrailing = 0;  ///< Bytes of the block behind its zlib stream.
};

/// The block must lie in the file. Its content is appended to `content` unless that is null;
/// nothing but a few buffers is held otherwise. Raises MemoryAllocationError if zlib gets no
/// memory.
BlockVerdict InflateBlock(FileBytes& file, std::uint64_t position, std::uint32_t size,
                          QovJbf::Block* content = nullptr);

}  // namespace Qov::Tools
