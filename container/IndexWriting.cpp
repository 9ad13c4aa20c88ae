#include "Qov/Jbf/Index.h"

#include <utility>

#include "BlockOutput.h"
#include "ContainerFormat.h"
#include "FileAccess.h"
#include "Qov/Log/Record.h"
#include "Qov/Util/Raise.h"
#include "Sources.h"

// How blocks go into a file: in the order of their items, back to back. A block's place follows
// from the sizes of all blocks before it, so none can be written before its predecessors.
namespace QovJbf {

using Qov::Log::Trace;
using Qov::Util::Raise;
using ErrorType = Qov::Util::Exception::ErrorType;

namespace {

bool HasFlag(const IndexItem& item, std::uint8_t flag) { return (item.mFlags & flag) != 0; }

}  // namespace

void Index::WriteBufferToFileStream(std::uint64_t k, std::FILE* file) {
  HandOver(k);
  WriteAllHandedOver(file);
}

// Gives block `k`, which is complete, to the workers or straight to those that wait for their
// turn in the file.
void Index::HandOver(std::uint64_t k) {
  Trace(kIndexSource) << "Writing buffer " << k << " to stream.";
  IndexItem& item = mItems[k];
  if (item.mFrozen || IsOnlyInFile(k)) Raise(kIndexSource, ErrorType::MismatchError);
  const std::uint32_t rawSize = GetFill(k);
  if (rawSize > 0) Trace(kIndexSource) << "Buffer length: " << rawSize;
  if (item.mStreamed) {
    item.mFlags |= BlockFlag::kCompressed;
    GetOutput().Finish(k);
  } else {
    GetOutput().Add(k, std::move(mBlocks[k]), HasFlag(item, BlockFlag::kCompressed));
  }
  if (HasFlag(item, BlockFlag::kFreezeWhenFull)) {
    item.mFrozen = true;
    item.mRawSize = rawSize;
  }
}

// Blocks follow one another in the file: the first one that is not written yet has its place when
// no block before it can change any more.
void Index::WriteWhatIsReady(std::FILE* file) {
  while (mpOutput && !mpOutput->IsEmpty()) {
    const std::uint64_t k = mpOutput->GetFirst();
    if (!mpOutput->IsWhole(k) && !IsWrittenUpTo(k)) return;
    if (!mpOutput->WriteFirst(file, GetPosition(k))) return;
    SetSize(k, mpOutput->RemoveFirst());
    if (HasFlag(mItems[k], BlockFlag::kCompressed)) {
      Trace(kIndexSource) << "Buffer length after transformations: " << mItems[k].mSize;
    }
    Trace(kIndexSource) << "Writing buffer at position: " << GetPosition(k);
    Trace(kIndexSource) << "Buffer " << k << " written to stream.";
  }
}

void Index::WriteAllHandedOver(std::FILE* file) {
  WriteWhatIsReady(file);
  while (mpOutput && mpOutput->HasWhole()) {
    // Else it waits for an open block, for ever.
    if (!mpOutput->IsWhole(mpOutput->GetFirst())) Raise(kIndexSource, ErrorType::NotImplemented);
    mpOutput->Wait();
    WriteWhatIsReady(file);
  }
}

void Index::WriteIndexBufferToFileStream(std::uint64_t k, std::FILE* file) {
  Trace(kIndexSource) << "Writing index buffer " << k << " to stream.";
  IndexItem& item = mItems[k];
  item.mLoaded = false;
  EncodeItems(k + 1, kBlockItems, mBlocks[k]);
  SetSize(k, mBlocks[k].GetSize());
  item.mFrozen = HasFlag(item, BlockFlag::kFreezeWhenFull);
  item.mRawSize = item.mSize;
  SeekToWrite(kIndexSource, file, GetPosition(k));
  mBlocks[k].Write(file, false);
  mBlocks[k].ReleaseMemory();
  Trace(kIndexSource) << "Index buffer " << k << " written to stream.";
}

void Index::WriteAllBuffersToFileStream(std::FILE* file) {
  Trace(kIndexSource) << "Writing all buffers to file stream ...";
  if (mItems.empty()) CreateFirstBlocks();
  IsWrittenUpTo(mItems.size());
  for (std::uint64_t k = mWritten; k < mItems.size(); ++k) {
    HandOver(k);
    WriteWhatIsReady(file);
  }
  WriteAllHandedOver(file);

  Block root;
  EncodeItems(0, kRootItems, root);
  SeekToWrite(kIndexSource, file, kRootPosition);
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
    if (!IsEmptyBlockName(name) && !IsIndexBlockName(name)) HandOverFull(stream);
  }
  WriteWhatIsReady(file);
  Trace(kIndexSource) << "Frozen blocks flushed. ";
}

void Index::HandOverFull(BlockSizeLimiter& stream) {
  for (std::size_t i = stream.mFrozen; i < stream.mBlocks.size(); ++i) {
    const std::uint64_t k = stream.mBlocks[i];
    const bool isLast = i + 1 == stream.mBlocks.size();
    const bool isFull = !isLast || GetFill(k) >= stream.mLimit;
    if (!mItems[k].mFrozen && HasFlag(mItems[k], BlockFlag::kFreezeWhenFull) && isFull) {
      if (!IsWrittenUpTo(k)) Raise(kIndexSource, ErrorType::NotImplemented);
      HandOver(k);
    }
    if (mItems[k].mFrozen && stream.mFrozen == i) ++stream.mFrozen;
  }
}

// True if every item before `k` is frozen or an index block; mWritten then is at least `k`.
bool Index::IsWrittenUpTo(std::uint64_t k) {
  while (mWritten < k && (mItems[mWritten].mFrozen || IsIndexBlockName(mItems[mWritten].mName)))
    ++mWritten;
  return mWritten >= k;
}

}  // namespace QovJbf
