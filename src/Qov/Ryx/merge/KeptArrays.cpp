#include "KeptArrays.h"

#include <cstring>
#include <utility>

namespace QovRyx {
namespace {

/// Different arrays have the same hash only on purpose.
constexpr std::size_t kMostEqualKeys = 16;

std::uint64_t CostOf(const KeptArrays::Bytes& bytes) {
  constexpr std::uint64_t kEntryCost = 256;  // about what the containers need
  return bytes->mSize + kEntryCost;
}

bool AreEqual(const ArrayBytes& a, const ArrayBytes& b) {
  return a.mSize == b.mSize && std::memcmp(a.mData.get(), b.mData.get(), a.mSize) == 0;
}

}  // namespace

std::optional<std::size_t> KeptArrays::Find(const Key& key, const Bytes& bytes) {
  const auto [begin, end] = mEntries.equal_range(key);
  for (auto entry = begin; entry != end; ++entry) {
    if (!AreEqual(*entry->second.mBytes, *bytes)) continue;
    entry->second.mIsPreferred = true;
    return entry->second.mArray;
  }
  return std::nullopt;
}

bool KeptArrays::Add(const Key& key, std::size_t array, Bytes bytes, bool isLikely) {
  const bool isRepeated = !mSeen.insert(key).second;
  if (!bytes || mEntries.count(key) == kMostEqualKeys) return isRepeated;
  const std::uint64_t cost = CostOf(bytes);
  if (cost > mMemory) return isRepeated;
  const bool isPreferred = isRepeated || isLikely;
  while (isPreferred && mNumBytes + cost > mMemory && !mOthers.empty()) DropLastOther();
  if (mNumBytes + cost > mMemory) return isRepeated;
  mNumBytes += cost;
  const auto entry = mEntries.insert({key, {array, std::move(bytes), isPreferred}});
  if (!isPreferred) mOthers.push_back(entry);
  return isRepeated;
}

/// Drops the last entry of mOthers, unless its array has repeated.
void KeptArrays::DropLastOther() {
  const auto entry = mOthers.back();
  mOthers.pop_back();
  if (entry->second.mIsPreferred) return;
  mNumBytes -= CostOf(entry->second.mBytes);
  mEntries.erase(entry);
}

}  // namespace QovRyx
