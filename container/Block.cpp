#include "Qov/Jbf/Block.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "ContainerFormat.h"
#include "Limits.h"
#include "Qov/Util/Assert.h"
#include "Qov/Util/Raise.h"
#include "Sources.h"

namespace QovJbf {

using Qov::Util::Raise;
using Qov::Util::RaiseNotEnoughBytes;
using Qov::Util::RaiseOutOfMemory;
using Qov::Util::RaiseReadError;
using Qov::Util::RaiseWriteError;
using ErrorType = Qov::Util::Exception::ErrorType;

namespace {

constexpr const char* kGrowthVariable = "TELMORAX_DEFAULT_RYX_BLOCK_SIZE";

void WriteBytes(std::FILE* file, const void* data, std::size_t n) {
  if (std::fwrite(data, 1, n, file) != n) {
    RaiseWriteError(kBlockSource);
  }
}

}  // namespace

std::uint32_t default_block_size = 10485760;

Block::~Block() { std::free(mData); }

void Block::AllocateAdditionalMemory(std::uint64_t extra) {
  if (extra == 0) return;
  void* grown = std::realloc(mData, mCapacity + extra);
  if (grown == nullptr) RaiseOutOfMemory(kBlockSource);
  mData = static_cast<unsigned char*>(grown);
  mCapacity += extra;
}

void Block::CheckFreeSpaceAndAllocateMemory(const std::uint32_t& at, std::uint32_t n) {
  const std::uint64_t end = std::uint64_t{at} + n;
  if (end > kLargestBlock) {
    RaiseOutOfMemory(kBlockSource);
  }
  if (end < mCapacity) return;
  QOV_ASSERT(!IsReleased());
  // The variable is read only when the block grows, because a lookup costs more than a write of
  // four bytes.
  default_block_size = ReadSizeVariable(kGrowthVariable, default_block_size);
  const std::uint64_t missing = end - mCapacity;
  AllocateAdditionalMemory(std::max<std::uint64_t>({n, default_block_size, missing}));
}

std::uint32_t Block::Put(const void* source, std::uint32_t n) {
  if (n == 0) return mPosition;
  CheckFreeSpaceAndAllocateMemory(mPosition, n);
  std::memcpy(mData + mPosition, source, n);
  mPosition += n;
  mSize = std::max(mSize, mPosition);
  return mPosition;
}

void Block::Get(void* target, std::uint32_t n) {
  if (n == 0) return;
  if (n > GetRemaining()) {
    RaiseNotEnoughBytes(kBlockSource);
  }
  QOV_ASSERT(!IsReleased());
  std::memcpy(target, mData + mPosition, n);
  mPosition += n;
}

void Block::SetPosition(std::uint64_t position) {
  if (position > mSize) Raise(kBlockSource, ErrorType::OutOfBounds, "Invalid block position");
  mPosition = static_cast<std::uint32_t>(position);
}

void Block::Read(std::FILE* file, std::uint32_t n) {
  if (n == 0) return;
  CheckFreeSpaceAndAllocateMemory(mPosition, n);
  if (std::fread(mData + mPosition, 1, n, file) != n) {
    RaiseReadError(kBlockSource);
  }
  mSize = std::max(mSize, mPosition + n);
}

void Block::Write(std::FILE* file, bool withSize) const {
  QOV_ASSERT(!IsReleased());
  if (withSize) WriteBytes(file, &mSize, sizeof mSize);
  if (mSize > 0) WriteBytes(file, mData, mSize);
}

void Block::Reset() { Block().Swap(*this); }

void Block::ReleaseMemory() {
  std::free(mData);
  mData = nullptr;
  mCapacity = 0;
  mPosition = mSize;
}

void Block::ReleaseSpareMemory() {
  if (mSize == 0 || mCapacity == mSize || mData == nullptr) return;
  void* shrunk = std::realloc(mData, mSize);
  if (shrunk == nullptr) return;  // the larger buffer can be used as well
  mData = static_cast<unsigned char*>(shrunk);
  mCapacity = mSize;
}

unsigned char* Block::Detach() {
  unsigned char* data = std::exchange(mData, nullptr);
  Reset();
  return data;
}

void Block::Attach(unsigned char* data, std::uint64_t capacity, std::uint32_t size) {
  QOV_ASSERT(data != nullptr && size <= capacity);
  Reset();
  mData = data;
  mCapacity = capacity;
  mSize = size;
  mPosition = size;
}

void Block::Swap(Block& other) noexcept {
  std::swap(mData, other.mData);
  std::swap(mCapacity, other.mCapacity);
  std::swap(mSize, other.mSize);
  std::swap(mPosition, other.mPosition);
}

}  // namespace QovJbf
