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

namespace {

/// Returns the length of the chunks that hold `n` bytes.
std::uint64_t RoundUp(std::uint64_t n) {
  return (n + ChunkPool::kChunkSize - 1) / ChunkPool::kChunkSize * ChunkPool::kChunkSize;
}

}  // namespace

BlockOutput::BlockOutput(unsigned threads, std::uint64_t blockSize, std::uint64_t length,
                         const WriteSettings& settings)
    : mThreads(threads),
      mBlockSize(blockSize),
      mCompressor(settings.mCompressor),
      mMostAtOnce(RoundUp(settings.mMostAtOnce)),
      mMemory(mCompressor == Compressor::Zlib
                  ? GetCompressionMemory(threads, blockSize, length)
                  : GetWholeBlockMemory(threads, std::min(blockSize, mMostAtOnce))),
      mMostMemory(std::max(mMemory, SystemResources().GetFreeMemory() / 2)),
      mQueue(threads, mMemory, settings.mLevel, mCompressor) {}

void BlockOutput::Add(std::uint64_t k, Block block, bool isCompressed) {
  if (!isCompressed) {
    mBlocks[k].mPlain = std::move(block);
    SetWhole(mBlocks[k]);
    return;
  }
  Entry& entry = GetEntry(k);
  entry.mRawSize = block.GetSize();
  Chunk content;
  if (entry.mRawSize > 0) content = Chunk(MallocBuffer(block.Detach()), 0, entry.mRawSize);
  FinishJob(entry, std::move(content));
}

// Adds the last part, which can be empty.
void BlockOutput::FinishJob(Entry& entry, Chunk part) {
  if (part.mSize > 0 && part.mSize <= mMostAtOnce && !entry.mIsStreamed) {
    mQueue.AddWhole(entry.mJob, std::move(part));
  } else {
    if (part.mSize > 0) mQueue.Add(entry.mJob, std::move(part));
    mQueue.Finish(entry.mJob);
  }
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

std::span<unsigned char> BlockOutput::GetSpace(std::uint64_t k, std::uint64_t n) {
  Entry& entry = GetEntry(k);
  if (entry.mFilling.GetSpace() == 0) {
    try {
      if (!MakeSpace(entry, n)) return {};
    } catch (const std::bad_alloc&) {
      RaiseOutOfMemory(kIndexSource);
    }
  }
  return {entry.mFilling.GetEnd(), entry.mFilling.GetSpace()};
}

// Returns false if there is no memory.
bool BlockOutput::MakeSpace(Entry& entry, std::uint64_t n) {
  if (mCompressor == Compressor::Fastest && !entry.mIsStreamed) {
    if (entry.mRawSize + n <= mMostAtOnce) return Collect(entry, n);
    entry.mIsStreamed = true;
    if (entry.mFilling.mSize > 0) mQueue.Add(entry.mJob, std::move(entry.mFilling));
  }
  if (!mQueue.HasRoom()) return false;
  entry.mFilling = mQueue.GetPool().Take();
  return true;
}

// Makes the chunk that holds the whole block large enough for `n` bytes more. Its capacity is a
// multiple of the usual one, because zlib may have to continue after it.
bool BlockOutput::Collect(Entry& entry, std::uint64_t n) {
  const std::uint64_t capacity =
      RoundUp(std::min(std::max(mBlockSize, entry.mRawSize + n), mMostAtOnce));
  ChunkPool& pool = mQueue.GetPool();
  if (entry.mFilling.mCapacity > 0) {
    pool.Resize(entry.mFilling, capacity);
    return true;
  }
  if (!mQueue.HasRoom(capacity)) return false;
  entry.mFilling = capacity == ChunkPool::kChunkSize ? pool.Take() : pool.Take(capacity);
  return true;
}

bool BlockOutput::Advance(std::uint64_t k, std::size_t n) {
  Entry& entry = GetEntry(k);
  entry.mFilling.mSize += n;
  entry.mRawSize += static_cast<std::uint32_t>(n);
  const bool isCollected = mCompressor == Compressor::Fastest && !entry.mIsStreamed;
  if (isCollected || entry.mFilling.GetSpace() > 0) return false;
  mQueue.Add(entry.mJob, std::move(entry.mFilling));
  return true;
}

void BlockOutput::Finish(std::uint64_t k) {
  Entry& entry = GetEntry(k);
  FinishJob(entry, std::move(entry.mFilling));
}

void BlockOutput::AllowExcess(std::uint64_t excess) {
  const std::uint64_t needed = mCompressor == Compressor::Zlib
                                   ? (mThreads - 1) * excess
                                   : GetWholeBlockMemory(mThreads, std::min(excess, mMostAtOnce));
  mQueue.RaiseBound(std::min(mMemory + needed, mMostMemory));
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
