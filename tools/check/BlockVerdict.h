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

/// Decompresses and checks a block, which must be inside the file. Appends its content to `content`
/// unless that is null; otherwise keeps only a few buffers in memory. Raises MemoryAllocationError
/// if there is no memory for zlib.
BlockVerdict InflateBlock(FileBytes& file, std::uint64_t position, std::uint32_t size,
                          QovJbf::Block* content = nullptr);

}  // namespace Qov::Tools
