#include "KeptArrays.h"

#include <utility>

namespace QovRyx {
namespace {

/// Different arrays have the same hash only on purpose.
constexpr std::size_t kMostEqualKeys = 16;

std::uint64_t CostOf(const KeptArrays::Bytes& bytes) {
  constexpr std::uint64_t kEntryCost = 256;  // about what the containers need
  return bytes.size() + kEntryCost;
}

}  // namespace

std::optional<std::size_t> KeptArrays::Find(const Key& key, const Bytes& bytes) {
  const auto [begin, end] = mEntries.equal_range(key);
  for (auto entry = begin; entry != end; ++entry) {
    if (entry->second.mBytes != bytes) continue;
    entry->second.mIsRepeated = true;
    return entry->second.mArray;
  }
  return std::nullopt;
}

void KeptArrays::Add(const Key& key, std::size_t array, Bytes bytes) {
  const bool isRepeated = !mSeen.insert(key).second;
  if (mEntries.count(key) == kMostEqualKeys) return;
  const std::uint64_t cost = CostOf(bytes);
  while (isRepeated && mNumBytes + cost > mMemory && !mSingles.empty()) DropLastSingle();
  if (mNumBytes + cost > mMemory) return;
  mNumBytes += cost;
  const auto entry = mEntries.insert({key, {array, std::move(bytes), isRepeated}});
  if (!isRepeated) mSingles.push_back(entry);
}

/// Drops the last entry of mSingles, unless its key has occurred again.
void KeptArrays::DropLastSingle() {
  const auto entry = mSingles.back();
  mSingles.pop_back();
  if (entry->second.mIsRepeated) return;
  mNumBytes -= CostOf(entry->second.mBytes);
  mEntries.erase(entry);
}

}  // namespace QovRyx
