#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ContainerFormat.h"
#include "Qov/Jbf/Index.h"

namespace QovJbf {

/// The state of a block. It is not stored.
struct BlockState {
  bool mFrozen = false;        ///< Written or about to be written; cannot change any more.
  bool mStreamed = false;      ///< Compressed while it fills; the content is not in memory.
  bool mLoaded = false;        ///< The content was read from the file and is in memory.
  bool mStaysLoaded = false;   ///< The content stays in memory once it is loaded.
  std::uint32_t mRawSize = 0;  ///< Size of the content of a frozen or streamed block.
};

/// The blocks of a stream, and the progress of reading and writing.
struct IndexStream : BlockSizeLimiter {
  /// mStarts[i] is the uncompressed offset of block i. Only the first ones may be known.
  std::vector<std::uint64_t> mStarts;
  std::size_t mReading = 0;    ///< Block that is read, an index into mBlocks.
  std::size_t mNumFrozen = 0;  ///< Number of blocks at the front that are known to be frozen.
  bool mStreamed = false;      ///< True if new blocks are streamed.
};

/// The items of an index, their blocks, and the streams that the blocks form. Does not access the
/// file.
class IndexTable {
 public:
  /// Creates the table of a new file.
  IndexTable() = default;
  /// Creates the table of a file whose root index has `length` bytes at `position`.
  IndexTable(std::uint64_t position, std::uint64_t length)
      : mIndexPosition(position), mIndexLength(length) {}

  std::uint64_t CreateBlock(const std::string& name);
  std::uint64_t CreateEmptyBlocks(std::uint64_t n);
  /// Creates the items that the root index lists.
  void CreateFirstBlocks();
  /// Makes a free item the next block of `name`.
  std::uint64_t AddBlock(const std::string& name);

  bool HasStream(const std::string& name) const { return mStreams.contains(name); }
  /// Returns null if the stream does not exist.
  IndexStream* FindStream(const std::string& name);
  /// Raises ElementNotFound if the stream does not exist.
  IndexStream& GetStream(const std::string& name);
  /// Creates the stream if it does not exist.
  IndexStream& MakeStream(const std::string& name);
  std::map<std::string, IndexStream>& GetStreams() { return mStreams; }
  /// Sets the limit of streams that are created later; 0 is the default.
  void SetBlockLimit(std::uint32_t limit, std::uint32_t usual) {
    mBlockLimit = limit;
    if (usual != 0) mUsualBlockLimit = usual;
  }
  std::uint64_t GetStreamLength(const std::string& name) const;
  void AddFlags(const std::string& name, std::uint8_t flags);

  const std::vector<IndexItem>& GetItems() const { return mItems; }
  std::uint64_t GetNumItems() const { return mItems.size(); }
  IndexItem& GetItem(std::uint64_t k) { return mItems[k]; }
  const IndexItem& GetItem(std::uint64_t k) const { return mItems[k]; }
  Block& GetBlock(std::uint64_t k) { return mBlocks[k]; }
  const Block& GetBlock(std::uint64_t k) const { return mBlocks[k]; }
  BlockState& GetState(std::uint64_t k) { return mStates[k]; }
  const BlockState& GetState(std::uint64_t k) const { return mStates[k]; }

  bool HasFlag(std::uint64_t k, std::uint8_t flag) const { return (mItems[k].mFlags & flag) != 0; }
  /// Returns true if the content has to be loaded before it can be read.
  bool IsOnlyInFile(std::uint64_t k) const;
  /// Returns the number of bytes put into a block that is not frozen.
  std::uint32_t GetFill(std::uint64_t k) const;
  /// Returns the uncompressed size, or nothing if it has to be read from the file.
  std::optional<std::uint32_t> FindRawLength(std::uint64_t k) const;
  std::uint64_t GetPosition(std::uint64_t k);
  void SetSize(std::uint64_t k, std::uint32_t size);

  /// Encodes `count` items from item `first` on into `block`.
  void EncodeItems(std::uint64_t first, std::uint64_t count, Block& block) const;
  /// Appends the items that are encoded in `block`. Raises ReadError if there would be more items
  /// than the file has bytes.
  void AppendItems(Block& block, std::uint64_t fileLength);
  /// Assigns the blocks to streams after all items were appended.
  void BuildStreams();

 private:
  std::uint64_t TakeFreeBlock();
  void MakeIndexBlock(std::uint64_t k);
  void ExtendStarts(IndexStream& stream) const;

  std::vector<IndexItem> mItems;
  std::vector<Block> mBlocks;       ///< The contents that are in memory, one for each item.
  std::vector<BlockState> mStates;  ///< One for each item.
  std::map<std::string, IndexStream> mStreams;
  std::uint8_t mNextId = 1;
  std::uint32_t mBlockLimit = 0;                        ///< 0 for the default.
  std::uint32_t mUsualBlockLimit = kDefaultBlockLimit;  ///< Without the environment variable.
  std::uint64_t mIndexPosition = kRootPosition;
  std::uint64_t mIndexLength = 0;
  std::size_t mNumPositioned = 0;  ///< Number of items at the front with a valid mPosition.
};

}  // namespace QovJbf
