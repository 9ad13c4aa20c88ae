#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Qov/Jbf/Block.h"
#include "check/FileBytes.h"
#include "container/ChunkPool.h"

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

/// The content of a sound block.
struct WholeBlock {
  std::uint32_t mRawLength = 0;
  std::uint32_t mNumTrailing = 0;  ///< As in BlockVerdict.
  QovJbf::Chunk mContent;

  BlockVerdict GetVerdict() const { return {mRawLength, false, "", mNumTrailing}; }
};

/// Reads the length of the content of a block. Returns nothing if the block cannot be decompressed
/// as a whole, because it is too large or cannot have that content.
std::optional<std::uint32_t> ReadWholeLength(const QovJbf::Descriptor& file, std::uint64_t position,
                                             std::uint32_t size);
/// Decompresses a block as a whole, into a chunk of `buffers`. Returns nothing if it is damaged or
/// too large, or if there is no memory; InflateBlock tells the reason. Other threads may call it,
/// because it does not raise errors.
std::optional<WholeBlock> InflateWholeBlock(const QovJbf::Descriptor& file, std::uint64_t position,
                                            std::uint32_t size, QovJbf::ChunkPool& buffers);

/// Decompresses and checks a block, which must be inside the file. Appends its content to `content`
/// unless that is null; otherwise keeps only a few buffers in memory. Raises MemoryAllocationError
/// if there is no memory for zlib.
BlockVerdict InflateBlock(FileBytes& file, std::uint64_t position, std::uint32_t size,
                          QovJbf::Block* content = nullptr);

}  // namespace Qov::Tools
