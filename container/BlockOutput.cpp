#include "BlockOutput.h"

#include <algorithm>
#include <new>
#include <utility>

#include "ContainerFormat.h"
#include "FileAccess.h"
#include "Qov/Util/Raise.h"
#include "Sources.h"
#include "SystemResources.h"
#include "ThreadCount.h"

namespace QovJbf {

using Qov::Util::RaiseOutOfMemory;

BlockOutput::BlockOutput(unsigned threads, std::uint64_t blockSize, std::uint64_t length, int level)
    : mThreads(threads),
      mMemory(GetCompressionMemory(threads, blockSize, length)),
      mMostMemory(std::max(mMemory, SystemResources().GetFreeMemory() / 2)),
      mQueue(threads, mMemory, level) {}

void BlockOutput::Add(std::uint64_t k, Block block, bool isCompressed) {
  if (!isCompressed) {
    mBlocks[k].mPlain = std::move(block);
    SetWhole(mBlocks[k]);
    return;
  }
  Entry& entry = GetEntry(k);
  entry.mRawSize = block.GetSize();
  if (entry.mRawSize > 0) {
    mQueue.Add(entry.mJob, Chunk(MallocBuffer(block.Detach()), 0, entry.mRawSize));
  }
  mQueue.Finish(entry.mJob);
  SetWhole(entry);
}

void BlockOutput::SetWhole(Entry& entry) {
  entry.mIsWhole = true;
  ++mNumWhole;
}

BlockOutput::Entry& BlockOutput::GetEntry(std::uint64_t k) {
  Entry& entry = mBlocks[k];
  if (!entry.mJob) entry.mJob = mQueue.Begin();
  return entry;
}

std::span<unsigned char> BlockOutput::GetSpace(std::uint64_t k) {
  Entry& entry = GetEntry(k);
  if (entry.mFilling.GetSpace() == 0) {
    if (!mQueue.HasRoom()) return {};
    entry.mFilling = TakeChunk();
  }
  return {entry.mFilling.GetEnd(), entry.mFilling.GetSpace()};
}

Chunk BlockOutput::TakeChunk() {
  try {
    return mQueue.GetPool().Take();
  } catch (const std::bad_alloc&) {
    RaiseOutOfMemory(kIndexSource);
  }
}

bool BlockOutput::Advance(std::uint64_t k, std::size_t n) {
  Entry& entry = GetEntry(k);
  entry.mFilling.mSize += n;
  entry.mRawSize += static_cast<std::uint32_t>(n);
  if (entry.mFilling.GetSpace() > 0) return false;
  mQueue.Add(entry.mJob, std::move(entry.mFilling));
  return true;
}

void BlockOutput::Finish(std::uint64_t k) {
  Entry& entry = GetEntry(k);
  if (entry.mFilling.mSize > 0) mQueue.Add(entry.mJob, std::move(entry.mFilling));
  mQueue.Finish(entry.mJob);
  SetWhole(entry);
}

void BlockOutput::AllowExcess(std::uint64_t excess) {
  mQueue.RaiseBound(std::min(mMemory + (mThreads - 1) * excess, mMostMemory));
}

bool BlockOutput::WriteFirst(std::FILE* file, std::uint64_t position) {
  Entry& entry = mBlocks.begin()->second;
  if (!entry.mJob) {
    SeekToWrite(kIndexSource, file, position);
    entry.mPlain.Write(file, false);
    entry.mWritten = entry.mPlain.GetSize();
    return true;
  }
  CompressionQueue::Output output = mQueue.TakeOutput(*entry.mJob);
  for (Chunk& chunk : output.mChunks) {
    WriteChunk(entry, file, position, chunk);
    mQueue.GetPool().Return(std::move(chunk));
  }
  if (output.mIsLast) WriteRawSize(entry, file, position);
  return output.mIsLast;
}

// A compressed block begins with the length of its content, which is not known until the block is
// full. The length so far is written first, and replaced later if the block has grown.
void BlockOutput::WriteChunk(Entry& entry, std::FILE* file, std::uint64_t position,
                             const Chunk& chunk) {
  if (entry.mWritten == 0) {
    WriteRawSize(entry, file, position);
    entry.mWritten = kRawLengthSize;
  }
  WriteAt(kIndexSource, file, position + entry.mWritten, chunk.mData.get(), chunk.mSize);
  entry.mWritten += chunk.mSize;
}

void BlockOutput::WriteRawSize(Entry& entry, std::FILE* file, std::uint64_t position) {
  if (entry.mWrittenRawSize == entry.mRawSize) return;
  WriteAt(kIndexSource, file, position, &entry.mRawSize, kRawLengthSize);
  entry.mWrittenRawSize = entry.mRawSize;
}

std::uint32_t BlockOutput::RemoveFirst() {
  const std::uint64_t written = mBlocks.begin()->second.mWritten;
  if (written > kLargestBlock) {
    RaiseOutOfMemory(kIndexSource);
  }
  mBlocks.erase(mBlocks.begin());
  --mNumWhole;
  return static_cast<std::uint32_t>(written);
}

}  // namespace QovJbf
