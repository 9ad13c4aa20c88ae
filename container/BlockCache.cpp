#include "BlockCache.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace QovJbf {

BlockCache& BlockCache::Instance() {
  static BlockCache blocks;
  return blocks;
}

bool BlockCache::Read(const void* owner, std::size_t block, std::uint64_t within, void* target,
                      std::size_t n) {
  const auto place = mPlaces.find({owner, block});
  if (place == mPlaces.end()) return false;
  mEntries.splice(mEntries.begin(), mEntries, place->second);
  std::memcpy(target, mEntries.front().mContent.get() + within, n);
  return true;
}

MallocBuffer BlockCache::MakeRoom(std::uint64_t size) {
  if (size > mMost) return nullptr;
  DropBefore(GetCost(size));
  return TryToAllocate(size);
}

void BlockCache::Add(const void* owner, std::size_t block, MallocBuffer content,
                     std::uint64_t size) {
  mEntries.push_front({{owner, block}, std::move(content), size});
  mPlaces[{owner, block}] = mEntries.begin();
  mNumBytes += GetCost(size);
}

void BlockCache::SetSize(std::uint64_t numBytes) {
  mMost = std::min(kMaxBytes, numBytes);
  DropBefore(0);
}

void BlockCache::Clear() {
  mPlaces.clear();
  mEntries.clear();
  mNumBytes = 0;
}

void BlockCache::DropAll(const void* owner) {
  for (auto place = mPlaces.lower_bound({owner, 0});
       place != mPlaces.end() && place->first.first == owner;) {
    const Entries::iterator entry = place->second;
    ++place;
    Drop(entry);
  }
}

void BlockCache::DropBefore(std::uint64_t cost) {
  while (!mEntries.empty() && mNumBytes + cost > mMost) Drop(std::prev(mEntries.end()));
}

void BlockCache::Drop(Entries::iterator entry) {
  mNumBytes -= GetCost(entry->mSize);
  mPlaces.erase(entry->mKey);
  mEntries.erase(entry);
}

}  // namespace QovJbf
