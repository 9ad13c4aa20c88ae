#include "Qov/Jbf/Index.h"

#include <sys/types.h>

#include "IndexLayout.h"
#include "Qov/Jbf/BlockZlibCompressor.h"
#include "Qov/Log/Record.h"
#include "Qov/Util/Raise.h"

// How blocks go into a file: in the order of their items, back to back. A block's place follows
// from the sizes of all blocks before it, so none can be written before its predecessors.
namespace QovJbf {

using Qov::Log::Trace;
using Qov::Util::Raise;
using ErrorType = Qov::Util::Exception::ErrorType;

namespace {

constexpr int kCompressionLevel = 6;

void SeekToWrite(std::FILE* file, std::uint64_t position) {
  if (fseeko(file, static_cast<off_t>(position), SEEK_SET) == 0) return;
  Trace(kIndexSource) << "File positioning failed";
  Raise(kIndexSource, ErrorType::WriteError, "Saving the buffer failed");
}

bool HasFlag(const IndexItem& item, std::uint8_t flag) { return (item.mFlags & flag) != 0; }

}  // namespace

void Index::WriteBufferToFileStream(std::uint64_t k, std::FILE* file) {
  Trace(kIndexSource) << "Writing buffer " << k << " to stream.";
  IndexItem& item = mItems[k];
  Block& block = mBlocks[k];
  if (item.mFrozen || IsOnlyInFile(k)) Raise(kIndexSource, ErrorType::MismatchError);
  const std::uint32_t rawSize = block.GetSize();
  if (rawSize > 0) Trace(kIndexSource) << "Buffer length: " << rawSize;
  if (HasFlag(item, BlockFlag::kCompressed)) {
    BlockZlibCompressor{kCompressionLevel}(block);
    Trace(kIndexSource) << "Buffer length after transformations: " << block.GetSize();
  }
  SetSize(k, block.GetSize());
  if (HasFlag(item, BlockFlag::kFreezeWhenFull)) {
    item.mFrozen = true;
    item.mRawSize = rawSize;
  }
  Trace(kIndexSource) << "Writing buffer at position: " << GetPosition(k);
  WriteAtPosition(k, file);
  Trace(kIndexSource) << "Buffer " << k << " written to stream.";
}

void Index::WriteAtPosition(std::uint64_t k, std::FILE* file) {
  SeekToWrite(file, GetPosition(k));
  mBlocks[k].Write(file, false);
  mBlocks[k].ReleaseMemory();
}

void Index::WriteIndexBufferToFileStream(std::uint64_t k, std::FILE* file) {
  Trace(kIndexSource) << "Writing index buffer " << k << " to stream.";
  IndexItem& item = mItems[k];
  item.mLoaded = false;
  EncodeItems(k + 1, kBlockItems, mBlocks[k]);
  SetSize(k, mBlocks[k].GetSize());
  item.mFrozen = HasFlag(item, BlockFlag::kFreezeWhenFull);
  item.mRawSize = item.mSize;
  WriteAtPosition(k, file);
  Trace(kIndexSource) << "Index buffer " << k << " written to stream.";
}

void Index::WriteAllBuffersToFileStream(std::FILE* file) {
  Trace(kIndexSource) << "Writing all buffers to file stream ...";
  if (mItems.empty()) CreateFirstBlocks();
  IsWrittenUpTo(mItems.size());
  for (std::uint64_t k = mWritten; k < mItems.size(); ++k) WriteBufferToFileStream(k, file);

  Block root;
  EncodeItems(0, kRootItems, root);
  SeekToWrite(file, kRootPosition);
  root.Write(file, true);
  if (HasStream(kIndexBlockName)) {
    for (const std::uint64_t k : GetBlockSizeLimiter(kIndexBlockName).mBlocks) {
      WriteIndexBufferToFileStream(k, file);
    }
  }
  Trace(kIndexSource) << "All buffers to file stream written.";
}

void Index::FlushFrozen(std::FILE* file) {
  Trace(kIndexSource) << "Flushing frozen blocks ... ";
  for (auto& [name, stream] : mLimiters) {
    if (!IsEmptyBlockName(name) && !name.starts_with(kIndexBlockName)) FlushFrozen(stream, file);
  }
  Trace(kIndexSource) << "Frozen blocks flushed. ";
}

void Index::FlushFrozen(BlockSizeLimiter& stream, std::FILE* file) {
  for (std::size_t i = stream.mFrozen; i < stream.mBlocks.size(); ++i) {
    const std::uint64_t k = stream.mBlocks[i];
    const bool isFull = mBlocks[k].GetSize() >= stream.mLimit;
    if (!mItems[k].mFrozen && HasFlag(mItems[k], BlockFlag::kFreezeWhenFull) && isFull) {
      if (!IsWrittenUpTo(k)) Raise(kIndexSource, ErrorType::NotImplemented);
      WriteBufferToFileStream(k, file);
    }
    if (mItems[k].mFrozen && stream.mFrozen == i) ++stream.mFrozen;
  }
}

// True if every item before `k` is frozen or an index block; mWritten then is at least `k`.
bool Index::IsWrittenUpTo(std::uint64_t k) {
  while (mWritten < k && (mItems[mWritten].mFrozen || IsIndexBlock(mItems[mWritten]))) ++mWritten;
  return mWritten >= k;
}

}  // namespace QovJbf
