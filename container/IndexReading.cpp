#include "Qov/Jbf/Index.h"

#include <zlib.h>

#include <algorithm>
#include <utility>

#include "ContainerFormat.h"
#include "FileAccess.h"
#include "Qov/Jbf/BlockZlibUnCompressor.h"
#include "Qov/Log/Record.h"
#include "Qov/Util/Raise.h"
#include "RawLength.h"
#include "Sources.h"

// How the bytes of a stream come back. Of a stream that lies in a file the block at
// BlockSizeLimiter::mReading is in memory, and those that reading came back to.
namespace QovJbf {

using Qov::Log::Trace;
using Qov::Util::Raise;
using Qov::Util::RaiseElementNotFound;
using Qov::Util::RaiseNotEnoughBytes;
using Qov::Util::RaiseReadError;
using ErrorType = Qov::Util::Exception::ErrorType;

namespace {

// An absent stream leaves the target of a Get as it is; every other error goes on.
template <class Reader>
void ReadUnlessAbsent(const Reader& read) {
  try {
    read();
  } catch (const Qov::Util::Exception& error) {
    if (error.GetType() != ErrorType::ElementNotFound) throw;
  }
}

void GetBytes(Block& block, void* target, std::uint64_t n) {
  if (n > kLargestBlock) {
    RaiseNotEnoughBytes(kIndexSource);
  }
  block.Get(target, static_cast<std::uint32_t>(n));
}

Block ReadWholeBlock(std::FILE* file, std::uint64_t position, std::uint32_t size) {
  CheckInFile(kIndexSource, GetFileLength(kIndexSource, file), position, size);
  SeekToRead(kIndexSource, file, position);
  Block block;
  block.AllocateAdditionalMemory(std::uint64_t{size} + 1);  // so much that Read adds nothing
  block.Read(file, size);
  return block;
}

}  // namespace

std::uint64_t Index::GetReadingBlockIndex(const std::string& name) {
  BlockSizeLimiter& stream = GetBlockSizeLimiter(name);
  for (std::size_t i = stream.mReading; i < stream.mBlocks.size(); ++i) {
    const std::uint64_t k = stream.mBlocks[i];
    if (i != stream.mReading && mItems[k].mLoaded) mBlocks[k].SetPosition(0);
    if (mBlocks[k].GetRemaining() == 0) continue;
    MoveReading(stream, i);
    return k;
  }
  RaiseElementNotFound(kIndexSource);
}

std::uint64_t Index::GetReadingBlockIndex(const std::string& name, std::FILE* file) {
  if (file != nullptr) WriteAllHandedOver(file);
  BlockSizeLimiter& stream = GetBlockSizeLimiter(name);
  if (stream.mBlocks.empty()) RaiseElementNotFound(kIndexSource);
  while (true) {
    const std::uint64_t k = stream.mBlocks[stream.mReading];
    if (IsOnlyInFile(k)) LoadBlock(k, file);
    const bool isLast = stream.mReading + 1 == stream.mBlocks.size();
    if (isLast || mBlocks[k].GetRemaining() > 0) return k;
    MoveReading(stream, stream.mReading + 1);
    const std::uint64_t next = stream.mBlocks[stream.mReading];
    if (mItems[next].mLoaded) mBlocks[next].SetPosition(0);
  }
}

void Index::Get(const std::string& name, void* target, std::uint64_t n) {
  ReadUnlessAbsent([&] { GetBytes(mBlocks[GetReadingBlockIndex(name)], target, n); });
}

void Index::Get(const std::string& name, void* target, std::uint64_t n, std::FILE* file) {
  ReadUnlessAbsent([&] { GetBytes(mBlocks[GetReadingBlockIndex(name, file)], target, n); });
}

bool Index::IsOnlyInFile(std::uint64_t k) const {
  return !mItems[k].mLoaded && mItems[k].mSize > 0 && mBlocks[k].GetData() == nullptr;
}

Block Index::ReadStoredBlock(std::uint64_t k, std::FILE* file) {
  Block block = ReadWholeBlock(file, GetPosition(k), mItems[k].mSize);
  if ((mItems[k].mFlags & BlockFlag::kCompressed) == 0) return block;
  std::uint32_t rawLength = 0;
  CopyFromBlock(block, rawLength);
  BlockZlibUnCompressor()(block);
  // Offsets into the stream count what the length field says, so it has to be right.
  if (block.GetSize() != rawLength) ThrowDamagedBlock(Z_DATA_ERROR);
  block.SetPosition(0);
  return block;
}

void Index::LoadBlock(std::uint64_t k, std::FILE* file) {
  mBlocks[k] = ReadStoredBlock(k, file);
  mItems[k].mLoaded = true;
}

// Blocks that came from the file and are passed over go back there, but only once: whoever goes to
// and fro between two of them does not have them inflated each time.
void Index::MoveReading(BlockSizeLimiter& stream, std::size_t to) {
  const std::uint64_t left = stream.mBlocks[stream.mReading];
  IndexItem& item = mItems[left];
  if (stream.mReading != to && item.mLoaded && !std::exchange(item.mStays, true)) {
    mBlocks[left].Reset();
    item.mLoaded = false;
  }
  stream.mReading = to;
}

std::optional<std::uint32_t> Index::FindRawLength(std::uint64_t k) const {
  const IndexItem& item = mItems[k];
  if (mBlocks[k].GetData() != nullptr) return mBlocks[k].GetSize();
  if (item.mFrozen || item.mStreamed) return item.mRawSize;
  const bool isCompressed = (item.mFlags & BlockFlag::kCompressed) != 0;
  if (isCompressed && item.mSize > 0) return std::nullopt;
  return item.mSize;
}

std::uint32_t Index::GetRawLength(std::uint64_t k, std::FILE* file) {
  if (const auto known = FindRawLength(k)) return *known;
  const std::uint64_t position = GetPosition(k);
  CheckInFile(kIndexSource, GetFileLength(kIndexSource, file), position, mItems[k].mSize);
  std::uint32_t rawLength = 0;
  ReadAt(kIndexSource, file, position, &rawLength, sizeof rawLength);
  CheckRawLength(kIndexSource, rawLength, mItems[k].mSize);
  return rawLength;
}

std::uint64_t Index::GetStreamLength(const std::string& name) const {
  const auto found = mLimiters.find(name);
  if (found == mLimiters.end()) RaiseElementNotFound(kIndexSource);
  const BlockSizeLimiter& stream = found->second;
  const std::size_t known = stream.mStarts.size();
  std::uint64_t length = known > 0 ? stream.mStarts.back() : 0;
  for (std::size_t i = known > 0 ? known - 1 : 0; i < stream.mBlocks.size(); ++i) {
    const auto rawLength = FindRawLength(stream.mBlocks[i]);
    if (!rawLength) Raise(kIndexSource, ErrorType::NotInitialized);
    length += *rawLength;
  }
  return length;
}

// Called before a block is added: all that are there have their final lengths.
void Index::ExtendStarts(BlockSizeLimiter& stream) const {
  std::vector<std::uint64_t>& starts = stream.mStarts;
  if (starts.empty()) starts.push_back(0);
  while (starts.size() <= stream.mBlocks.size()) {
    const auto rawLength = FindRawLength(stream.mBlocks[starts.size() - 1]);
    if (!rawLength) return;
    starts.push_back(starts.back() + *rawLength);
  }
}

// The last block that begins at or before `offset`.
std::size_t Index::FindBlock(BlockSizeLimiter& stream, std::uint64_t offset, std::FILE* file) {
  std::vector<std::uint64_t>& starts = stream.mStarts;
  if (starts.empty()) starts.push_back(0);
  while (starts.size() < stream.mBlocks.size() && starts.back() <= offset) {
    starts.push_back(starts.back() + GetRawLength(stream.mBlocks[starts.size() - 1], file));
  }
  const auto after = std::upper_bound(starts.begin(), starts.end(), offset);
  return static_cast<std::size_t>(after - starts.begin()) - 1;
}

void Index::SetStreamPosition(const std::string& name, std::uint64_t offset, std::FILE* file) {
  if (file != nullptr) WriteAllHandedOver(file);
  if (!HasStream(name)) CreateBlock(name);
  BlockSizeLimiter& stream = GetBlockSizeLimiter(name);
  if (stream.mBlocks.empty()) return;
  const std::size_t target = FindBlock(stream, offset, file);
  const std::uint64_t k = stream.mBlocks[target];
  MoveReading(stream, target);
  if (IsOnlyInFile(k)) LoadBlock(k, file);
  const std::uint64_t within = offset - stream.mStarts[target];
  mBlocks[k].SetPosition(std::min<std::uint64_t>(within, mBlocks[k].GetSize()));
  // Blocks that are being written are the last ones of their stream; their cursors are where
  // writing left them. Those that came from the file are put right when reading goes on to them:
  // there may be any number of them.
  for (std::size_t i = stream.mBlocks.size() - 1; i > target; --i) {
    const std::uint64_t later = stream.mBlocks[i];
    if (mBlocks[later].GetData() == nullptr || mItems[later].mLoaded) break;
    mBlocks[later].SetPosition(0);
  }
}

void Index::AppendItems(Block& block, std::uint64_t fileLength) {
  const std::uint32_t count = Detail::GetCount<IndexItem>(block);
  // Compressed index blocks could list more than the machine can hold.
  if (count > fileLength || mItems.size() > fileLength - count) {
    RaiseReadError(kIndexSource);
  }
  for (std::uint32_t i = 0; i < count; ++i) CopyFromBlock(block, mItems.emplace_back());
}

void Index::ReadIndexBufferFromFileStream(std::FILE* file, std::uint32_t length) {
  Trace(kIndexSource) << "Reading index block ... ";
  const off_t position = ftello(file);
  if (position < 0) RaiseReadError(kIndexSource);
  Index read;
  read.mIndexPosition = static_cast<std::uint64_t>(position);
  read.mIndexLength = length;
  const std::uint64_t fileLength = GetFileLength(kIndexSource, file);
  Block root = ReadWholeBlock(file, read.mIndexPosition, length);
  read.AppendItems(root, fileLength);
  for (std::uint64_t k = 0; k < read.mItems.size(); ++k) {
    if (!IsIndexBlockName(read.mItems[k].mName)) continue;
    Block block = read.ReadStoredBlock(k, file);
    read.mItems[k].mLoaded = true;
    read.AppendItems(block, fileLength);
  }
  read.RebuildLimiters();
  *this = std::move(read);
  Trace(kIndexSource) << "Index block read.";
}

void Index::RebuildLimiters() {
  mBlocks.resize(mItems.size());
  for (std::uint64_t k = 0; k < mItems.size(); ++k) {
    MakeLimiter(mItems[k].mName).mBlocks.push_back(k);
  }
  // The list of free blocks is kept with the lowest at its end.
  if (!HasStream(kEmptyBlockName)) return;
  std::vector<std::uint64_t>& free = GetBlockSizeLimiter(kEmptyBlockName).mBlocks;
  std::reverse(free.begin(), free.end());
}

}  // namespace QovJbf
