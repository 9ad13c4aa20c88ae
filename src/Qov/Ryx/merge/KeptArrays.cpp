#include "KeptArrays.h"

#include <utility>

namespace QovRyx {
namespace {

/// Different arrays have the same hash only on purpose.
constexpr std::size_t kMostEqualKeys = 16;

}  // namespace

std::optional<std::size_t> KeptArrays::Find(const Key& key, const Bytes& bytes) {
  const auto [begin, end] = mEntries.equal_range(key);
  for (auto entry = begin; entry != end; ++entry) {
    if (entry->second.mBytes != bytes) continue;
    if (!std::exchange(entry->second.mIsRepeated, true)) std::erase(mSingles, entry);
    return entry->second.mArray;
  }
  return std::nullopt;
}

void KeptArrays::Add(const Key& key, std::size_t array, Bytes bytes) {
  const bool isRepeated = !mSeen.insert(key).second;
  if (mEntries.count(key) == kMostEqualKeys) return;
  while (isRepeated && mNumBytes + bytes.size() > mMemory && !mSingles.empty()) DropLastSingle();
  if (mNumBytes + bytes.size() > mMemory) return;
  mNumBytes += bytes.size();
  const auto entry = mEntries.insert({key, {array, std::move(bytes), isRepeated}});
  if (!isRepeated) mSingles.push_back(entry);
}

void KeptArrays::DropLastSingle() {
  mNumBytes -= mSingles.back()->second.mBytes.size();
  mEntries.erase(mSingles.back());
  mSingles.pop_back();
}

}  // namespace QovRyx
