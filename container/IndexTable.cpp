#include "IndexTable.h"

#include <algorithm>

#include "Limits.h"
#include "Qov/Util/Assert.h"
#include "Qov/Util/Raise.h"
#include "Sources.h"

// How the table grows. A new file has 20 items, all of them free:
//
//   0 ... 18 | 19              listed by the root index
//              20 ... 218 | 219           listed by the index block of item 19
//                           220 ... 419   listed by the index block of item 219
//
// The last free item becomes an index block as soon as it is needed.
namespace QovJbf {

using Qov::Util::Raise;
using Qov::Util::RaiseElementNotFound;
using ErrorType = Qov::Util::Exception::ErrorType;

namespace {

constexpr const char* kLimitVariable = "TELMORAX_MAX_RYX_BLOCK_SIZE";

}  // namespace

std::uint64_t IndexTable::CreateBlock(const std::string& name) {
  const std::uint64_t k = mItems.size();
  mItems.emplace_back();
  mItems.back().mId = mNextId++;
  mItems.back().mName = name;
  mBlocks.emplace_back();
  mStates.emplace_back();
  MakeStream(name).mBlocks.push_back(k);
  return k;
}

std::uint64_t IndexTable::CreateEmptyBlocks(std::uint64_t n) {
  for (std::uint64_t i = 0; i < n; ++i) CreateBlock(kEmptyBlockName);
  // Free items are taken from the back. The lowest one is taken first.
  std::vector<std::uint64_t>& free = MakeStream(kEmptyBlockName).mBlocks;
  std::reverse(free.begin(), free.end());
  return GetItemListSize(n);
}

void IndexTable::CreateFirstBlocks() {
  mIndexLength = CreateEmptyBlocks(kRootItems) + kRootLengthSize;
  mNumPositioned = 0;
}

std::uint64_t IndexTable::AddBlock(const std::string& name) {
  const std::uint64_t k = TakeFreeBlock();
  IndexStream& stream = MakeStream(name);
  ExtendStarts(stream);
  stream.mBlocks.push_back(k);
  mItems[k].mName = name;
  mStates[k].mStreamed = stream.mStreamed;
  return k;
}

std::uint64_t IndexTable::TakeFreeBlock() {
  if (!HasStream(kEmptyBlockName)) CreateFirstBlocks();
  std::vector<std::uint64_t>& free = GetStream(kEmptyBlockName).mBlocks;
  if (free.empty()) {
    Raise(kIndexSource, ErrorType::MismatchError, "This point should not be reached");
  }
  std::uint64_t k = free.back();
  free.pop_back();
  if (free.empty()) {
    MakeIndexBlock(k);
    k = free.back();
    free.pop_back();
  }
  return k;
}

void IndexTable::MakeIndexBlock(std::uint64_t k) {
  IndexStream& indexBlocks = MakeStream(kIndexBlockName);
  indexBlocks.mLimit = static_cast<std::uint32_t>(CreateEmptyBlocks(kBlockItems));
  indexBlocks.mBlocks.push_back(k);
  mItems[k].mName = kIndexBlockName;
  mItems[k].mFlags |= BlockFlag::kFreezeWhenFull;
  EncodeItems(k + 1, kBlockItems, mBlocks[k]);
  SetSize(k, mBlocks[k].GetSize());
}

IndexStream* IndexTable::FindStream(const std::string& name) {
  const auto found = mStreams.find(name);
  return found == mStreams.end() ? nullptr : &found->second;
}

IndexStream& IndexTable::GetStream(const std::string& name) {
  if (IndexStream* stream = FindStream(name)) return *stream;
  RaiseElementNotFound(kIndexSource);
}

IndexStream& IndexTable::MakeStream(const std::string& name) {
  const auto [position, isNew] = mStreams.try_emplace(name);
  if (isNew) {
    position->second.mLimit =
        mBlockLimit != 0 ? mBlockLimit : ReadSizeVariable(kLimitVariable, mUsualBlockLimit);
  }
  return position->second;
}

std::uint64_t IndexTable::GetStreamLength(const std::string& name) const {
  const auto found = mStreams.find(name);
  if (found == mStreams.end()) RaiseElementNotFound(kIndexSource);
  const IndexStream& stream = found->second;
  const std::size_t known = stream.mStarts.size();
  std::uint64_t length = known > 0 ? stream.mStarts.back() : 0;
  for (std::size_t i = known > 0 ? known - 1 : 0; i < stream.mBlocks.size(); ++i) {
    const auto rawLength = FindRawLength(stream.mBlocks[i]);
    if (!rawLength) Raise(kIndexSource, ErrorType::NotInitialized);
    length += *rawLength;
  }
  return length;
}

// Called before a block is added, when all present blocks have their final sizes.
void IndexTable::ExtendStarts(IndexStream& stream) const {
  std::vector<std::uint64_t>& starts = stream.mStarts;
  if (starts.empty()) starts.push_back(0);
  while (starts.size() <= stream.mBlocks.size()) {
    const auto rawLength = FindRawLength(stream.mBlocks[starts.size() - 1]);
    if (!rawLength) return;
    starts.push_back(starts.back() + *rawLength);
  }
}

void IndexTable::AddFlags(const std::string& name, std::uint8_t flags) {
  const IndexStream* stream = FindStream(name);
  if (stream == nullptr) return;
  // The flags of a frozen block describe its bytes in the file.
  for (std::size_t i = stream->mNumFrozen; i < stream->mBlocks.size(); ++i) {
    const std::uint64_t k = stream->mBlocks[i];
    if (!mStates[k].mFrozen) mItems[k].mFlags = static_cast<std::uint8_t>(mItems[k].mFlags | flags);
  }
}

bool IndexTable::IsOnlyInFile(std::uint64_t k) const {
  return !mStates[k].mLoaded && mItems[k].mSize > 0 && mBlocks[k].GetData() == nullptr;
}

std::uint32_t IndexTable::GetFill(std::uint64_t k) const {
  return mStates[k].mStreamed ? mStates[k].mRawSize : mBlocks[k].GetSize();
}

std::optional<std::uint32_t> IndexTable::FindRawLength(std::uint64_t k) const {
  const BlockState& state = mStates[k];
  if (mBlocks[k].GetData() != nullptr) return mBlocks[k].GetSize();
  if (state.mFrozen || state.mStreamed) return state.mRawSize;
  if (HasFlag(k, BlockFlag::kCompressed) && mItems[k].mSize > 0) return std::nullopt;
  return mItems[k].mSize;
}

std::uint64_t IndexTable::GetPosition(std::uint64_t k) {
  QOV_ASSERT(k < mItems.size());
  for (; mNumPositioned <= k; ++mNumPositioned) {
    IndexItem& item = mItems[mNumPositioned];
    if (mNumPositioned == 0) {
      item.mPosition = mIndexPosition + mIndexLength;
    } else {
      const IndexItem& previous = mItems[mNumPositioned - 1];
      item.mPosition = previous.mPosition + previous.mSize;
    }
  }
  return mItems[k].mPosition;
}

void IndexTable::SetSize(std::uint64_t k, std::uint32_t size) {
  if (mItems[k].mSize == size) return;
  mItems[k].mSize = size;
  mNumPositioned = std::min<std::size_t>(mNumPositioned, k + 1);
}

void IndexTable::EncodeItems(std::uint64_t first, std::uint64_t count, Block& block) const {
  if (first + count > mItems.size()) Raise(kIndexSource, ErrorType::MismatchError);
  block.Reset();
  block.AllocateAdditionalMemory(GetItemListSize(count) + 1);
  CopyToBlock(block, static_cast<std::uint32_t>(count));
  for (std::uint64_t i = first; i < first + count; ++i) CopyToBlock(block, mItems[i]);
}

void IndexTable::AppendItems(Block& block, std::uint64_t fileLength) {
  const std::uint32_t count = Detail::GetCount<IndexItem>(block);
  // Compressed index blocks could list more items than fit into memory.
  if (count > fileLength || mItems.size() > fileLength - count) {
    Qov::Util::RaiseReadError(kIndexSource);
  }
  for (std::uint32_t i = 0; i < count; ++i) CopyFromBlock(block, mItems.emplace_back());
  mBlocks.resize(mItems.size());
  mStates.resize(mItems.size());
}

void IndexTable::BuildStreams() {
  for (std::uint64_t k = 0; k < mItems.size(); ++k) {
    MakeStream(mItems[k].mName).mBlocks.push_back(k);
  }
  // The lowest free item is the last one of the list.
  IndexStream* free = FindStream(kEmptyBlockName);
  if (free != nullptr) std::reverse(free->mBlocks.begin(), free->mBlocks.end());
}

}  // namespace QovJbf
