#include "BlockFiller.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "BlockOutput.h"
#include "MallocBuffer.h"
#include "Qov/Util/Assert.h"
#include "Qov/Util/Raise.h"
#include "Sources.h"

namespace QovJbf {

using Qov::Util::RaiseOutOfMemory;

std::uint64_t BlockFiller::GetWritingBlockIndex(const std::string& name) {
  const IndexStream* stream = mTable.FindStream(name);
  if (stream != nullptr && !stream->mBlocks.empty()) {
    const std::uint64_t last = stream->mBlocks.back();
    const bool isOpen = !mTable.GetState(last).mFrozen && !mTable.IsOnlyInFile(last);
    if (isOpen && mTable.GetFill(last) < stream->mLimit) return last;
    if (isOpen) mTable.GetBlock(last).ReleaseSpareMemory();
  }
  if (IsEmptyBlockName(name)) return mTable.CreateBlock(name);
  return mTable.AddBlock(name);
}

void BlockFiller::Put(const std::string& name, const void* source, std::uint64_t n) {
  const std::uint64_t k = GetBlockForBytes(name, n);
  if (mTable.GetState(k).mStreamed) {
    StreamBytes(k, source, n);
  } else {
    mTable.GetBlock(k).Put(source, static_cast<std::uint32_t>(n));
  }
}

void BlockFiller::Put(const std::string& name, std::uint64_t n, const Index::PieceSource& source) {
  const std::uint64_t k = GetBlockForBytes(name, n);
  if (mTable.GetState(k).mStreamed) {
    Stream(k, n, source);
  } else {
    const MallocBuffer bytes = AllocateBuffer(kIndexSource, n);
    source(bytes.get(), n);
    mTable.GetBlock(k).Put(bytes.get(), static_cast<std::uint32_t>(n));
  }
}

std::uint64_t BlockFiller::GetBlockForBytes(const std::string& name, std::uint64_t n) {
  if (n > kLargestBlock) RaiseOutOfMemory(kIndexSource);
  const std::uint64_t k = GetWritingBlockIndex(name);
  if (mTable.GetState(k).mFrozen) Qov::Util::RaiseElementNotFound(kIndexSource);
  return FindRoom(k, n);
}

// Returns block `k`, or a new block if `k` is streamed and would become larger than a block can be.
std::uint64_t BlockFiller::FindRoom(std::uint64_t k, std::uint64_t n) {
  const bool hasRoom = n <= kLargestBlock - mTable.GetFill(k);
  if (hasRoom || !mTable.GetState(k).mStreamed) return k;
  return mTable.AddBlock(std::string(mTable.GetItem(k).mName));
}

std::uint64_t BlockFiller::GetOpenBlock(const std::string& name) {
  const std::uint64_t k = GetWritingBlockIndex(name);
  if (mTable.GetState(k).mFrozen) {
    Qov::Util::Raise(kIndexSource, Qov::Util::Exception::ErrorType::MiscellaneousError,
                     "Attempt to write into a frozen block");
  }
  return k;
}

void BlockFiller::FinishValue(std::uint64_t k) {
  if (!mTable.GetState(k).mStreamed) return;
  const Block encoded = std::move(mTable.GetBlock(k));
  StreamBytes(FindRoom(k, encoded.GetSize()), encoded.GetData(), encoded.GetSize());
}

void BlockFiller::StreamToFile(const std::string& name, std::FILE* file) {
  mTable.MakeStream(name).mStreamed = true;
  mpFile = file;
}

void BlockFiller::StreamBytes(std::uint64_t k, const void* bytes, std::uint64_t n) {
  const auto* next = static_cast<const unsigned char*>(bytes);
  Stream(k, n, [&next](void* target, std::size_t part) {
    std::memcpy(target, next, part);
    next += part;
  });
}

void BlockFiller::Stream(std::uint64_t k, std::uint64_t n, const Index::PieceSource& source) {
  QOV_ASSERT(mpFile != nullptr);
  const std::uint64_t size = mTable.GetState(k).mRawSize + n;
  if (size > kLargestBlock) RaiseOutOfMemory(kIndexSource);
  const std::uint32_t limit = mTable.GetStream(mTable.GetItem(k).mName).mLimit;
  if (size > limit) mWriter.GetOutput().AllowExcess(size - limit);
  while (n > 0) {
    const std::span<unsigned char> space = WaitForSpace(k, n);
    const std::size_t part = std::min<std::uint64_t>(n, space.size());
    source(space.data(), part);
    mTable.GetState(k).mRawSize += static_cast<std::uint32_t>(part);
    n -= part;
    if (mWriter.GetOutput().Advance(k, part)) mWriter.WriteReady(mpFile);
  }
}

// Returns memory for some of the next `n` bytes of block `k`. Writes finished blocks while there is
// none.
std::span<unsigned char> BlockFiller::WaitForSpace(std::uint64_t k, std::uint64_t n) {
  while (true) {
    const std::span<unsigned char> space = mWriter.GetOutput().GetSpace(k, n);
    if (!space.empty()) return space;
    mWriter.GetOutput().Wait();
    mWriter.WriteReady(mpFile);
  }
}

}  // namespace QovJbf
