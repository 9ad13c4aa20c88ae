#include "Qov/Jbf/Index.h"

#include <algorithm>

#include "BlockOutput.h"
#include "ContainerFormat.h"
#include "Limits.h"
#include "MallocBuffer.h"
#include "Qov/Util/Assert.h"
#include "Qov/Util/Raise.h"
#include "Sources.h"

// How the table of items and the streams in it grow. A new file has 20 items, all free:
//
//   0 ... 18 | 19              items that the root index lists
//              20 ... 218 | 219           items that the index block in 19 lists
//                           220 ... 419   items that the index block in 219 lists
//
// The last free item of a batch becomes an index block as soon as it is asked for.
namespace QovJbf {

using Qov::Util::Raise;
using Qov::Util::RaiseElementNotFound;
using Qov::Util::RaiseOutOfMemory;
using ErrorType = Qov::Util::Exception::ErrorType;

namespace {

constexpr const char* kLimitVariable = "TELMORAX_MAX_RYX_BLOCK_SIZE";

}  // namespace

Index::Index() = default;
Index::~Index() = default;
Index& Index::operator=(Index&&) noexcept = default;

std::uint64_t Index::CreateBlock(const std::string& name) {
  const std::uint64_t k = mItems.size();
  mItems.emplace_back();
  mItems.back().mId = mNextId++;
  mItems.back().mName = name;
  mBlocks.emplace_back();
  MakeLimiter(name).mBlocks.push_back(k);
  return k;
}

std::uint64_t Index::CreateEmptyBlocks(std::uint64_t n) {
  for (std::uint64_t i = 0; i < n; ++i) CreateBlock(kEmptyBlockName);
  // Free blocks are taken from the back, the lowest first.
  std::vector<std::uint64_t>& free = MakeLimiter(kEmptyBlockName).mBlocks;
  std::reverse(free.begin(), free.end());
  return GetItemListSize(n);
}

void Index::CreateFirstBlocks() {
  mIndexLength = CreateEmptyBlocks(kRootItems) + kRootLengthSize;
  mPositioned = 0;
}

std::uint64_t Index::GetWritingBlockIndex(const std::string& name) {
  const auto found = mLimiters.find(name);
  if (found != mLimiters.end() && !found->second.mBlocks.empty()) {
    const std::uint64_t last = found->second.mBlocks.back();
    const bool isOpen = !mItems[last].mFrozen && !IsOnlyInFile(last);
    if (isOpen && GetFill(last) < found->second.mLimit) return last;
    if (isOpen) mBlocks[last].ReleaseSpareMemory();
  }
  if (IsEmptyBlockName(name)) return CreateBlock(name);
  return AddBlock(name);
}

std::uint64_t Index::AddBlock(const std::string& name) {
  const std::uint64_t k = TakeFreeBlock();
  BlockSizeLimiter& stream = MakeLimiter(name);
  ExtendStarts(stream);
  stream.mBlocks.push_back(k);
  mItems[k].mName = name;
  mItems[k].mStreamed = stream.mStreamed;
  return k;
}

std::uint32_t Index::GetFill(std::uint64_t k) const {
  return mItems[k].mStreamed ? mItems[k].mRawSize : mBlocks[k].GetSize();
}

std::uint64_t Index::TakeFreeBlock() {
  if (!HasStream(kEmptyBlockName)) CreateFirstBlocks();
  BlockSizeLimiter& free = GetBlockSizeLimiter(kEmptyBlockName);
  if (free.mBlocks.empty()) {
    Raise(kIndexSource, ErrorType::MismatchError, "This point should not be reached");
  }
  std::uint64_t k = free.mBlocks.back();
  free.mBlocks.pop_back();
  if (free.mBlocks.empty()) {
    MakeIndexBlock(k);
    k = free.mBlocks.back();
    free.mBlocks.pop_back();
  }
  return k;
}

void Index::MakeIndexBlock(std::uint64_t k) {
  BlockSizeLimiter& indexBlocks = MakeLimiter(kIndexBlockName);
  indexBlocks.mLimit = static_cast<std::uint32_t>(CreateEmptyBlocks(kBlockItems));
  indexBlocks.mBlocks.push_back(k);
  mItems[k].mName = kIndexBlockName;
  mItems[k].mFlags |= BlockFlag::kFreezeWhenFull;
  EncodeItems(k + 1, kBlockItems, mBlocks[k]);
  SetSize(k, mBlocks[k].GetSize());
}

void Index::EncodeItems(std::uint64_t first, std::uint64_t count, Block& block) const {
  if (first + count > mItems.size()) Raise(kIndexSource, ErrorType::MismatchError);
  block.Reset();
  block.AllocateAdditionalMemory(GetItemListSize(count) + 1);
  CopyToBlock(block, static_cast<std::uint32_t>(count));
  for (std::uint64_t i = first; i < first + count; ++i) CopyToBlock(block, mItems[i]);
}

BlockSizeLimiter& Index::GetBlockSizeLimiter(const std::string& name) {
  const auto found = mLimiters.find(name);
  if (found == mLimiters.end()) RaiseElementNotFound(kIndexSource);
  return found->second;
}

BlockSizeLimiter& Index::MakeLimiter(const std::string& name) {
  const auto [position, isNew] = mLimiters.try_emplace(name);
  if (isNew) position->second.mLimit = ReadSizeVariable(kLimitVariable, kDefaultBlockLimit);
  return position->second;
}

void Index::Put(const std::string& name, const void* source, std::uint64_t n) {
  const std::uint64_t k = GetBlockForBytes(name, n);
  if (mItems[k].mStreamed) {
    StreamBytes(k, source, n);
  } else {
    mBlocks[k].Put(source, static_cast<std::uint32_t>(n));
  }
}

void Index::Put(const std::string& name, std::uint64_t n, const PieceSource& source) {
  const std::uint64_t k = GetBlockForBytes(name, n);
  if (mItems[k].mStreamed) {
    Stream(k, n, source);
  } else {
    const MallocBuffer bytes = AllocateBuffer(kIndexSource, n);
    source(bytes.get(), n);
    mBlocks[k].Put(bytes.get(), static_cast<std::uint32_t>(n));
  }
}

std::uint64_t Index::GetBlockForBytes(const std::string& name, std::uint64_t n) {
  if (n > kLargestBlock) {
    RaiseOutOfMemory(kIndexSource);
  }
  const std::uint64_t k = GetWritingBlockIndex(name);
  if (mItems[k].mFrozen) RaiseElementNotFound(kIndexSource);
  return FindRoom(k, n);
}

// What goes to the file while it fills can be larger than anything in memory, and find no room in a
// block that is not full yet.
std::uint64_t Index::FindRoom(std::uint64_t k, std::uint64_t n) {
  const bool hasRoom = n <= kLargestBlock - GetFill(k);
  return hasRoom || !mItems[k].mStreamed ? k : AddBlock(std::string(mItems[k].mName));
}

std::uint64_t Index::GetOpenBlock(const std::string& name) {
  const std::uint64_t k = GetWritingBlockIndex(name);
  if (mItems[k].mFrozen) {
    Raise(kIndexSource, ErrorType::MiscellaneousError, "Attempt to write into a frozen block");
  }
  return k;
}

void Index::AddFlags(const std::string& name, std::uint8_t flags) {
  const auto found = mLimiters.find(name);
  if (found == mLimiters.end()) return;
  // The flags of a frozen block say how its bytes lie in the file.
  const BlockSizeLimiter& stream = found->second;
  for (std::size_t i = stream.mFrozen; i < stream.mBlocks.size(); ++i) {
    IndexItem& item = mItems[stream.mBlocks[i]];
    if (!item.mFrozen) item.mFlags = static_cast<std::uint8_t>(item.mFlags | flags);
  }
}

std::uint64_t Index::GetPosition(std::uint64_t k) {
  QOV_ASSERT(k < mItems.size());
  for (; mPositioned <= k; ++mPositioned) {
    IndexItem& item = mItems[mPositioned];
    if (mPositioned == 0) {
      item.mPosition = mIndexPosition + mIndexLength;
    } else {
      const IndexItem& previous = mItems[mPositioned - 1];
      item.mPosition = previous.mPosition + previous.mSize;
    }
  }
  return mItems[k].mPosition;
}

void Index::SetSize(std::uint64_t k, std::uint32_t size) {
  if (mItems[k].mSize == size) return;
  mItems[k].mSize = size;
  mPositioned = std::min<std::size_t>(mPositioned, k + 1);
}

}  // namespace QovJbf
