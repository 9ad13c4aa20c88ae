#pragma once

#include <cstdint>
#include <string>

#include "Qov/Jbf/Block.h"
#include "check/FileBytes.h"
#include "container/MallocBuffer.h"

namespace Qov::Tools {

/// Result of decompressing a block.
struct BlockVerdict {
  std::uint32_t mRawLength = 0;  ///< As stored in the block.
  /// True if no zlib stream of the block's size can have that length. Readers refuse the whole
  /// stream.
  bool mIsImpossible = false;
  std::string mTrouble;            ///< The error as a sentence, or empty.
  std::uint32_t mNumTrailing = 0;  ///< Bytes of the block after its zlib stream.
};

/// Decompresses a block as a whole. Does the same as InflateBlock if the block is damaged or too
/// large. Sets `content` if the block is sound and was decompressed as a whole.
BlockVerdict InflateWholeBlock(FileBytes& file, std::uint64_t position, std::uint32_t size,
                               QovJbf::MallocBuffer& content);

/// Decompresses and checks a block, which must be inside the file. Appends its content to `content`
/// unless that is null; otherwise keeps only a few buffers in memory. Raises MemoryAllocationError
/// if there is no memory for zlib.
BlockVerdict InflateBlock(FileBytes& file, std::uint64_t position, std::uint32_t size,
                          QovJbf::Block* content = nullptr);

}  // namespace Qov::Tools
