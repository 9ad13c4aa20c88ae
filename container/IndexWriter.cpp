#include "IndexWriter.h"

#include <algorithm>
#include <utility>

#include "BlockChecks.h"
#include "BlockOutput.h"
#include "FileAccess.h"
#include "Qov/Log/Record.h"
#include "Qov/Util/Raise.h"
#include "Sources.h"
#include "ThreadCount.h"

namespace QovJbf {

using Qov::Log::Trace;
using Qov::Util::Raise;
using ErrorType = Qov::Util::Exception::ErrorType;

IndexWriter::IndexWriter(IndexTable& table) : mTable(table) {}

IndexWriter::~IndexWriter() = default;

BlockOutput& IndexWriter::GetOutput() {
  if (!mpOutput) {
    std::uint32_t blockSize = 0;
    for (const auto& [name, stream] : mTable.GetStreams()) {
      blockSize = std::max(blockSize, stream.mLimit);
    }
    const unsigned threads =
        GetThreadCount(blockSize, SystemResources(), mSettings.mThreads, mSettings.mCompressor);
    mNumThreads = std::min(threads, mMostThreads);
    mpOutput = std::make_unique<BlockOutput>(mNumThreads, blockSize, mExpectedLength, mSettings);
  }
  return *mpOutput;
}

void IndexWriter::StopWriting() {
  mpOutput.reset();
  mpChecks.reset();
}

void IndexWriter::WriteBuffer(std::uint64_t k, std::FILE* file) {
  HandOver(k);
  WriteAllHandedOver(file);
}

// Passes a complete block to the output, which compresses it if the block has that flag.
void IndexWriter::HandOver(std::uint64_t k) {
  Trace(kIndexSource) << "Writing buffer " << k << " to stream.";
  BlockState& state = mTable.GetState(k);
  if (state.mFrozen || mTable.IsOnlyInFile(k)) Raise(kIndexSource, ErrorType::MismatchError);
  const std::uint32_t rawSize = mTable.GetFill(k);
  if (rawSize > 0) Trace(kIndexSource) << "Buffer length: " << rawSize;
  if (state.mStreamed) {
    mTable.GetItem(k).mFlags |= BlockFlag::kCompressed;
    GetOutput().Finish(k);
  } else {
    GetOutput().Add(k, std::move(mTable.GetBlock(k)), mTable.HasFlag(k, BlockFlag::kCompressed));
  }
  if (mTable.HasFlag(k, BlockFlag::kFreezeWhenFull)) {
    state.mFrozen = true;
    state.mRawSize = rawSize;
  }
}

void IndexWriter::WriteReady(std::FILE* file) {
  while (mpOutput && !mpOutput->IsEmpty()) {
    const std::uint64_t k = mpOutput->GetFirst();
    if (!mpOutput->IsWhole(k) && FindFirstOpen() < k) return;
    if (!mpOutput->WriteFirst(file, mTable.GetPosition(k))) return;
    mTable.SetSize(k, mpOutput->RemoveFirst());
    EndBlock(k, file);
    if (mTable.HasFlag(k, BlockFlag::kCompressed)) {
      Trace(kIndexSource) << "Buffer length after transformations: " << mTable.GetItem(k).mSize;
    }
    Trace(kIndexSource) << "Writing buffer at position: " << mTable.GetPosition(k);
    Trace(kIndexSource) << "Buffer " << k << " written to stream.";
  }
}

void IndexWriter::WriteAllHandedOver(std::FILE* file) {
  WriteReady(file);
  while (mpOutput && mpOutput->HasWhole()) {
    // A block before it that still fills would never get ready.
    if (!mpOutput->IsWhole(mpOutput->GetFirst())) Raise(kIndexSource, ErrorType::NotImplemented);
    mpOutput->Wait();
    WriteReady(file);
  }
}

void IndexWriter::WriteIndexBuffer(std::uint64_t k, std::FILE* file) {
  Trace(kIndexSource) << "Writing index buffer " << k << " to stream.";
  Block& block = mTable.GetBlock(k);
  BlockState& state = mTable.GetState(k);
  state.mLoaded = false;
  mTable.EncodeItems(k + 1, kBlockItems, block);
  mTable.SetSize(k, block.GetSize());
  state.mFrozen = mTable.HasFlag(k, BlockFlag::kFreezeWhenFull);
  state.mRawSize = block.GetSize();
  SeekToWrite(kIndexSource, file, mTable.GetPosition(k));
  block.Write(file, false);
  block.ReleaseMemory();
  Trace(kIndexSource) << "Index buffer " << k << " written to stream.";
}

void IndexWriter::WriteAllBuffers(std::FILE* file) {
  Trace(kIndexSource) << "Writing all buffers to file stream ...";
  if (mTable.GetNumItems() == 0) mTable.CreateFirstBlocks();
  for (std::uint64_t k = FindFirstOpen(); k < mTable.GetNumItems(); ++k) {
    HandOver(k);
    WriteReady(file);
  }
  WriteAllHandedOver(file);

  Block root;
  mTable.EncodeItems(0, kRootItems, root);
  SeekToWrite(kIndexSource, file, kRootPosition);
  root.Write(file, true);
  if (const IndexStream* indexBlocks = mTable.FindStream(kIndexBlockName)) {
    for (const std::uint64_t k : indexBlocks->mBlocks) WriteIndexBuffer(k, file);
  }
  Trace(kIndexSource) << "All buffers to file stream written.";
}

void IndexWriter::FlushFrozen(std::FILE* file) {
  Trace(kIndexSource) << "Flushing frozen blocks ... ";
  for (auto& [name, stream] : mTable.GetStreams()) {
    if (!IsEmptyBlockName(name) && !IsIndexBlockName(name)) HandOverFull(stream);
  }
  WriteReady(file);
  Trace(kIndexSource) << "Frozen blocks flushed. ";
}

void IndexWriter::HandOverFull(IndexStream& stream) {
  for (std::size_t i = stream.mNumFrozen; i < stream.mBlocks.size(); ++i) {
    const std::uint64_t k = stream.mBlocks[i];
    const BlockState& state = mTable.GetState(k);
    const bool isLast = i + 1 == stream.mBlocks.size();
    const bool isFull = !isLast || mTable.GetFill(k) >= stream.mLimit;
    if (!state.mFrozen && mTable.HasFlag(k, BlockFlag::kFreezeWhenFull) && isFull) {
      if (FindFirstOpen() < k) Raise(kIndexSource, ErrorType::NotImplemented);
      HandOver(k);
    }
    if (state.mFrozen && stream.mNumFrozen == i) ++stream.mNumFrozen;
  }
}

// Returns the first item that is neither frozen nor an index block. The blocks before it do not
// change any more.
std::uint64_t IndexWriter::FindFirstOpen() {
  const auto isClosed = [this](std::uint64_t k) {
    return mTable.GetState(k).mFrozen || IsIndexBlockName(mTable.GetItem(k).mName);
  };
  while (mFirstOpen < mTable.GetNumItems() && isClosed(mFirstOpen)) ++mFirstOpen;
  return mFirstOpen;
}

void IndexWriter::PutStoredBlock(const std::string& name, StreamReader& reader,
                                 const StreamReader::BlockExtent& block, bool check,
                                 std::FILE* file) {
  WriteAllHandedOver(file);
  const std::uint64_t k = mTable.AddBlock(name);
  if (FindFirstOpen() < k) Raise(kIndexSource, ErrorType::NotImplemented);
  IndexItem& item = mTable.GetItem(k);
  item.mFlags |= BlockFlag::kFreezeWhenFull;
  if (block.mCompressed) item.mFlags |= BlockFlag::kCompressed;
  mTable.GetState(k).mFrozen = true;
  mTable.GetState(k).mRawSize = block.mRawLength;
  mTable.SetSize(k, block.mStoredSize);
  if (check && block.mCompressed) GetChecks().Add(reader, block);
  if (check && !block.mCompressed) reader.SetVerified(block);
  reader.CopyStored(block, file, mTable.GetPosition(k));
  EndBlock(k, file);
}

// Called when all bytes of a block are written.
void IndexWriter::EndBlock(std::uint64_t k, std::FILE* file) const {
  if (!mSettings.mStartsWriteback) return;
  StartWriteback(file, mTable.GetPosition(k), mTable.GetItem(k).mSize);
}

BlockChecks& IndexWriter::GetChecks() {
  if (!mpChecks) {
    const unsigned threads =
        GetThreadCount(ChunkPool::kChunkSize, SystemResources(), mSettings.mThreads);
    mNumThreads = std::min(threads, mMostThreads);
    mpChecks = std::make_unique<BlockChecks>(mNumThreads);
  }
  return *mpChecks;
}

void IndexWriter::FinishChecks() {
  if (!mpChecks) return;
  mpChecks->Finish();
  mpChecks.reset();
}

}  // namespace QovJbf
