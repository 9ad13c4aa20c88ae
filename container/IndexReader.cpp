#include "IndexReader.h"

#include <zlib.h>

#include <algorithm>
#include <utility>

#include "FileAccess.h"
#include "Qov/Jbf/BlockZlibUnCompressor.h"
#include "Qov/Log/Record.h"
#include "Qov/Util/Raise.h"
#include "RawLength.h"
#include "Sources.h"

namespace QovJbf {

using Qov::Log::Trace;
using Qov::Util::RaiseElementNotFound;

namespace {

// Calls `read`. A stream that does not exist is not an error.
template <class Reader>
void ReadUnlessAbsent(const Reader& read) {
  try {
    read();
  } catch (const Qov::Util::Exception& error) {
    if (error.GetType() != Qov::Util::Exception::ErrorType::ElementNotFound) throw;
  }
}

void GetBytes(Block& block, void* target, std::uint64_t n) {
  if (n > kLargestBlock) Qov::Util::RaiseNotEnoughBytes(kIndexSource);
  block.Get(target, static_cast<std::uint32_t>(n));
}

Block ReadBytes(std::FILE* file, std::uint64_t position, std::uint32_t size) {
  CheckInFile(kIndexSource, GetFileLength(kIndexSource, file), position, size);
  SeekToRead(kIndexSource, file, position);
  Block block;
  block.AllocateAdditionalMemory(std::uint64_t{size} + 1);  // enough for Read to allocate nothing
  block.Read(file, size);
  return block;
}

Block ReadStoredBlock(IndexTable& table, std::uint64_t k, std::FILE* file) {
  Block block = ReadBytes(file, table.GetPosition(k), table.GetItem(k).mSize);
  if (!table.HasFlag(k, BlockFlag::kCompressed)) return block;
  std::uint32_t rawLength = 0;
  CopyFromBlock(block, rawLength);
  BlockZlibUnCompressor()(block);
  // The offsets of later blocks depend on the stored length.
  if (block.GetSize() != rawLength) ThrowDamagedBlock(Z_DATA_ERROR);
  block.SetPosition(0);
  return block;
}

}  // namespace

IndexTable IndexReader::ReadTable(std::FILE* file, std::uint32_t length) {
  Trace(kIndexSource) << "Reading index block ... ";
  const off_t position = ftello(file);
  if (position < 0) Qov::Util::RaiseReadError(kIndexSource);
  IndexTable table(static_cast<std::uint64_t>(position), length);
  const std::uint64_t fileLength = GetFileLength(kIndexSource, file);
  Block root = ReadBytes(file, static_cast<std::uint64_t>(position), length);
  table.AppendItems(root, fileLength);
  for (std::uint64_t k = 0; k < table.GetNumItems(); ++k) {
    if (!IsIndexBlockName(table.GetItem(k).mName)) continue;
    Block block = ReadStoredBlock(table, k, file);
    table.GetState(k).mLoaded = true;
    table.AppendItems(block, fileLength);
  }
  table.BuildStreams();
  Trace(kIndexSource) << "Index block read.";
  return table;
}

std::uint64_t IndexReader::GetReadingBlockIndex(const std::string& name) {
  IndexStream& stream = mTable.GetStream(name);
  for (std::size_t i = stream.mReading; i < stream.mBlocks.size(); ++i) {
    const std::uint64_t k = stream.mBlocks[i];
    if (i != stream.mReading && mTable.GetState(k).mLoaded) mTable.GetBlock(k).SetPosition(0);
    if (mTable.GetBlock(k).GetRemaining() == 0) continue;
    MoveReading(stream, i);
    return k;
  }
  RaiseElementNotFound(kIndexSource);
}

std::uint64_t IndexReader::GetReadingBlockIndex(const std::string& name, std::FILE* file) {
  IndexStream& stream = mTable.GetStream(name);
  if (stream.mBlocks.empty()) RaiseElementNotFound(kIndexSource);
  while (true) {
    const std::uint64_t k = stream.mBlocks[stream.mReading];
    if (mTable.IsOnlyInFile(k)) LoadBlock(k, file);
    const bool isLast = stream.mReading + 1 == stream.mBlocks.size();
    if (isLast || mTable.GetBlock(k).GetRemaining() > 0) return k;
    MoveReading(stream, stream.mReading + 1);
    const std::uint64_t next = stream.mBlocks[stream.mReading];
    if (mTable.GetState(next).mLoaded) mTable.GetBlock(next).SetPosition(0);
  }
}

void IndexReader::Get(const std::string& name, void* target, std::uint64_t n) {
  ReadUnlessAbsent([&] { GetBytes(mTable.GetBlock(GetReadingBlockIndex(name)), target, n); });
}

void IndexReader::Get(const std::string& name, void* target, std::uint64_t n, std::FILE* file) {
  ReadUnlessAbsent([&] { GetBytes(mTable.GetBlock(GetReadingBlockIndex(name, file)), target, n); });
}

void IndexReader::LoadBlock(std::uint64_t k, std::FILE* file) {
  mTable.GetBlock(k) = ReadStoredBlock(mTable, k, file);
  mTable.GetState(k).mLoaded = true;
}

// Frees the loaded block that reading leaves, but only the first time, so that a reader that
// alternates between two blocks does not decompress them each time.
void IndexReader::MoveReading(IndexStream& stream, std::size_t to) {
  const std::uint64_t left = stream.mBlocks[stream.mReading];
  BlockState& state = mTable.GetState(left);
  if (stream.mReading != to && state.mLoaded && !std::exchange(state.mStaysLoaded, true)) {
    mTable.GetBlock(left).Reset();
    state.mLoaded = false;
  }
  stream.mReading = to;
}

std::uint32_t IndexReader::GetRawLength(std::uint64_t k, std::FILE* file) {
  if (const auto known = mTable.FindRawLength(k)) return *known;
  const std::uint64_t position = mTable.GetPosition(k);
  const std::uint32_t size = mTable.GetItem(k).mSize;
  CheckInFile(kIndexSource, GetFileLength(kIndexSource, file), position, size);
  std::uint32_t rawLength = 0;
  ReadAt(kIndexSource, file, position, &rawLength, kRawLengthSize);
  CheckRawLength(kIndexSource, rawLength, size);
  return rawLength;
}

// Returns the last block that begins at or before `offset`.
std::size_t IndexReader::FindBlock(IndexStream& stream, std::uint64_t offset, std::FILE* file) {
  std::vector<std::uint64_t>& starts = stream.mStarts;
  if (starts.empty()) starts.push_back(0);
  while (starts.size() < stream.mBlocks.size() && starts.back() <= offset) {
    starts.push_back(starts.back() + GetRawLength(stream.mBlocks[starts.size() - 1], file));
  }
  const auto after = std::upper_bound(starts.begin(), starts.end(), offset);
  return static_cast<std::size_t>(after - starts.begin()) - 1;
}

void IndexReader::SetStreamPosition(const std::string& name, std::uint64_t offset,
                                    std::FILE* file) {
  if (!mTable.HasStream(name)) mTable.CreateBlock(name);
  IndexStream& stream = mTable.GetStream(name);
  if (stream.mBlocks.empty()) return;
  const std::size_t target = FindBlock(stream, offset, file);
  const std::uint64_t k = stream.mBlocks[target];
  MoveReading(stream, target);
  if (mTable.IsOnlyInFile(k)) LoadBlock(k, file);
  Block& block = mTable.GetBlock(k);
  block.SetPosition(std::min<std::uint64_t>(offset - stream.mStarts[target], block.GetSize()));
  // The cursors of blocks that are being written are at their ends. Such blocks are the last ones
  // of their stream. The cursors of loaded blocks are reset when reading reaches them, because
  // there can be many loaded blocks.
  for (std::size_t i = stream.mBlocks.size() - 1; i > target; --i) {
    const std::uint64_t later = stream.mBlocks[i];
    if (mTable.GetBlock(later).GetData() == nullptr || mTable.GetState(later).mLoaded) break;
    mTable.GetBlock(later).SetPosition(0);
  }
}

}  // namespace QovJbf
