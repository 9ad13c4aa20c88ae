#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Jbf/Block.h"
#include "Qov/Jbf/BlockIo.h"
#include "Qov/Util/Exception.h"

namespace QovJbf {

class BlockOutput;

/// What IndexItem::mFlags says of a block.
namespace BlockFlag {
/// Compressed when written, uncompressed when loaded.
inline constexpr std::uint8_t kCompressed = 0x01;
/// Written out as soon as it is full, and its memory freed.
inline constexpr std::uint8_t kFreezeWhenFull = 0x20;
}  // namespace BlockFlag

/// One physical block of a stream. In a file, 139 bytes:
///   id: u8 | name length: u32, 128 | name: 128 bytes, zero-padded | size: u32 | flags: u8 |
///   flags2: u8
struct IndexItem {
  static constexpr std::uint32_t NameLength = 128;
  static constexpr std::uint32_t kEncodedSize = 1 + 4 + NameLength + 4 + 1 + 1;

  std::uint8_t mId = 0;         ///< A creation counter; carried only.
  std::string mName;            ///< The stream; the first NameLength bytes are stored.
  std::uint64_t mPosition = 0;  ///< Offset in the file, computed along the chain, never stored.
  std::uint32_t mSize = 0;      ///< Bytes in the file, after transformations.
  std::uint8_t mFlags = 0;      ///< BlockFlag bits.
  std::uint8_t mFlags2 = 0;     ///< Carried only.
  bool mFrozen = false;         ///< Written or about to be; may not be written again.
  bool mLoaded = false;         ///< Its bytes are in memory, read from the file.
  bool mStays = false;          ///< Once loaded it stays, because it was loaded before.
  bool mStreamed = false;       ///< Compressed while it fills; its content is not in memory.
  std::uint32_t mRawSize = 0;   ///< Bytes before transformations, of a frozen or streamed block.
};

QOV_EXPORT void CopyToBlock(Block& block, const IndexItem& item);
QOV_EXPORT void CopyFromBlock(Block& block, IndexItem& item);
/// An item whose name is empty.
template <>
inline constexpr std::size_t kLeastEncodedSize<IndexItem> =
    IndexItem::kEncodedSize - IndexItem::NameLength;

/// The physical blocks of one stream in order, and how big each may grow.
struct BlockSizeLimiter {
  std::vector<std::uint64_t> mBlocks;
  std::uint32_t mLimit = 0;
  /// New blocks are compressed while they fill.
  bool mStreamed = false;
  /// Where reading is: an index into mBlocks. Blocks before it are exhausted.
  std::size_t mReading = 0;
  /// mStarts[i] is the uncompressed offset of block i, as far as it is known.
  std::vector<std::uint64_t> mStarts;
  /// How many blocks at the front are known to be frozen.
  std::size_t mFrozen = 0;
};

/// The table of named streams of one container file.
///
/// A stream is cut into physical blocks: a new one is begun when the last one has reached the
/// limit of its stream (TELMORAX_MAX_RYX_BLOCK_SIZE, decimal, at most 4294967294; 200 MiB when
/// unset). A single Put is never cut. Slots for blocks are made 20 at first, then 200 at a time;
/// the last free slot of each batch becomes an index block that lists the batch after it.
///
/// Blocks are compressed on several threads at a time and written in the order of their items; the
/// bytes of the file do not depend on it. RYXMERGE_THREADS says how many threads there are; with 1
/// none is started. Without it they are as many as the processors and the memory allow.
///
/// Errors bear the source "include/Qov/Jbf/Index".
class QOV_EXPORT Index {
 public:
  /// Fills its target with the next bytes of a value.
  using PieceSource = std::function<void(void* target, std::size_t n)>;

  Index();
  ~Index();
  Index& operator=(Index&&) noexcept;

  std::uint64_t CreateBlock(const std::string& name);
  /// Appends `n` free slots; returns the stored size of an index of `n` items.
  std::uint64_t CreateEmptyBlocks(std::uint64_t n);
  /// The block into which the next bytes of `name` go, made if need be.
  std::uint64_t GetWritingBlockIndex(const std::string& name);
  /// The block from which the next bytes of `name` come, of those in memory. Raises
  /// ElementNotFound for an unknown or exhausted stream.
  std::uint64_t GetReadingBlockIndex(const std::string& name);
  /// The same, loading blocks on demand; an exhausted stream gives its last block.
  std::uint64_t GetReadingBlockIndex(const std::string& name, std::FILE* file);
  BlockSizeLimiter& GetBlockSizeLimiter(const std::string& name);
  bool HasStream(const std::string& name) const { return mLimiters.contains(name); }

  /// Raw bytes. Into a frozen block: ElementNotFound.
  void Put(const std::string& name, const void* source, std::uint64_t n);
  /// One encoded value. Into a frozen block: MiscellaneousError.
  template <class T>
  void Put(const std::string& name, const T& value) {
    const std::uint64_t k = GetOpenBlock(name);
    CopyToBlock(mBlocks[k], value);
    if (mItems[k].mStreamed) StreamEncoded(k);
  }
  /// Raw bytes that `source` delivers piece by piece; what it throws leaves the stream with the
  /// pieces that came before.
  void Put(const std::string& name, std::uint64_t n, const PieceSource& source);
  /// Appends a block whose `storedSize` bytes `source` delivers as they are to lie in `file`,
  /// where they go at once. Raises NotImplemented if an earlier block is still open.
  void PutStoredBlock(const std::string& name, std::uint32_t rawLength, std::uint32_t storedSize,
                      bool isCompressed, const PieceSource& source, std::FILE* file);
  /// Leaves the target as it is when the stream is absent.
  void Get(const std::string& name, void* target, std::uint64_t n);
  void Get(const std::string& name, void* target, std::uint64_t n, std::FILE* file);

  /// The uncompressed bytes of `name` so far, a stream that is being written; raises
  /// ElementNotFound if there is no such stream.
  std::uint64_t GetStreamLength(const std::string& name) const;
  /// Sets flags on all blocks that `name` has now and that are not frozen; nothing if it has
  /// none.
  void AddFlags(const std::string& name, std::uint8_t flags);
  /// Puts reading at byte `offset` of the uncompressed stream, or at its end if that is nearer.
  /// What is passed over is not inflated; going back is possible. A stream that does not exist
  /// gets an empty block. `file` may be null if all is in memory.
  void SetStreamPosition(const std::string& name, std::uint64_t offset, std::FILE* file);

  /// From now on new blocks of `name` are compressed while they fill and go to `file` as soon as
  /// their place is known, so that blocks of any size take little memory. What is put cannot be
  /// read back from this index. Memory is planned for `expectedLength` bytes of it, 0 if it is not
  /// known how many will come.
  void StreamToFile(const std::string& name, std::FILE* file, std::uint64_t expectedLength = 0);
  /// Drops what is still to be written, before the file is closed.
  void StopWriting();
  /// Compresses with at most `most` threads. Call it before anything is written.
  void LimitThreads(unsigned most) { mMostThreads = most; }
  /// Returns the number of threads that compressed blocks so far, 1 if only the calling thread did.
  unsigned GetNumThreads() const { return mNumThreads; }
  void WriteBufferToFileStream(std::uint64_t k, std::FILE* file);
  void WriteIndexBufferToFileStream(std::uint64_t k, std::FILE* file);
  void WriteAllBuffersToFileStream(std::FILE* file);
  /// Writes the full blocks that are to be frozen, in file order, and frees their memory.
  void FlushFrozen(std::FILE* file);
  /// Reads the root index at the current place of `file` and the index blocks it leads to. What
  /// this index held before is kept if that fails and replaced otherwise.
  void ReadIndexBufferFromFileStream(std::FILE* file, std::uint32_t length);

  const std::vector<IndexItem>& GetItems() const { return mItems; }
  const Block& GetBlock(std::uint64_t k) const { return mBlocks[k]; }
  Block& GetBlock(std::uint64_t k) { return mBlocks[k]; }
  /// Where block `k` begins in the file, computed along the chain.
  std::uint64_t GetPosition(std::uint64_t k);

 private:
  std::uint64_t GetOpenBlock(const std::string& name);
  std::uint64_t GetBlockForBytes(const std::string& name, std::uint64_t n);
  std::uint64_t FindRoom(std::uint64_t k, std::uint64_t n);
  std::uint32_t GetFill(std::uint64_t k) const;
  BlockSizeLimiter& MakeLimiter(const std::string& name);
  void CreateFirstBlocks();
  std::uint64_t AddBlock(const std::string& name);
  std::uint64_t TakeFreeBlock();
  void MakeIndexBlock(std::uint64_t k);
  void EncodeItems(std::uint64_t first, std::uint64_t count, Block& block) const;
  void SetSize(std::uint64_t k, std::uint32_t size);

  std::optional<std::uint32_t> FindRawLength(std::uint64_t k) const;
  std::uint32_t GetRawLength(std::uint64_t k, std::FILE* file);
  std::size_t FindBlock(BlockSizeLimiter& stream, std::uint64_t offset, std::FILE* file);
  void ExtendStarts(BlockSizeLimiter& stream) const;
  bool IsOnlyInFile(std::uint64_t k) const;
  Block ReadStoredBlock(std::uint64_t k, std::FILE* file);
  void LoadBlock(std::uint64_t k, std::FILE* file);
  void MoveReading(BlockSizeLimiter& stream, std::size_t to);

  void AppendItems(Block& block, std::uint64_t fileLength);
  void RebuildLimiters();

  bool IsWrittenUpTo(std::uint64_t k);
  void HandOverFull(BlockSizeLimiter& stream);

  BlockOutput& GetOutput();
  void HandOver(std::uint64_t k);
  void WriteWhatIsReady(std::FILE* file);
  void WriteAllHandedOver(std::FILE* file);
  void StreamEncoded(std::uint64_t k);
  void StreamBytes(std::uint64_t k, const void* bytes, std::uint64_t n);
  void Stream(std::uint64_t k, std::uint64_t n, const PieceSource& source);
  std::span<unsigned char> WaitForSpace(std::uint64_t k);

  std::vector<IndexItem> mItems;
  std::vector<Block> mBlocks;
  std::map<std::string, BlockSizeLimiter> mLimiters;
  std::uint8_t mNextId = 1;
  std::uint64_t mIndexPosition = 12;
  std::uint64_t mIndexLength = 0;
  std::size_t mPositioned = 0;  ///< How many items at the front have a valid mPosition.
  std::size_t mWritten = 0;     ///< How many items at the front are frozen or index blocks.
  std::unique_ptr<BlockOutput> mpOutput;  ///< What is being compressed; null until it is needed.
  std::FILE* mpFile = nullptr;            ///< Where streamed blocks go.
  unsigned mMostThreads = std::numeric_limits<unsigned>::max();
  unsigned mNumThreads = 1;
  std::uint64_t mExpectedLength = 0;  ///< Bytes of the streamed blocks; 0 if not known.
};

}  // namespace QovJbf
