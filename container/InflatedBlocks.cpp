#include "InflatedBlocks.h"

#include <cstring>
#include <iterator>

namespace QovJbf {

InflatedBlocks& InflatedBlocks::Instance() {
  static InflatedBlocks blocks;
  return blocks;
}

bool InflatedBlocks::Read(const void* owner, std::size_t block, std::uint64_t within, void* target,
                          std::size_t n) {
  const auto place = mPlaces.find({owner, block});
  if (place == mPlaces.end()) return false;
  mEntries.splice(mEntries.begin(), mEntries, place->second);
  std::memcpy(target, mEntries.front().mContent.get() + within, n);
  return true;
}

void InflatedBlocks::Add(const void* owner, std::size_t block, MallocBuffer content,
                         std::uint64_t size) {
  while (!mEntries.empty() && mNumBytes + size > kMostBytes) Drop(std::prev(mEntries.end()));
  mEntries.push_front({{owner, block}, std::move(content), size});
  mPlaces[{owner, block}] = mEntries.begin();
  mNumBytes += size;
}

void InflatedBlocks::DropThoseOf(const void* owner) {
  for (auto place = mPlaces.lower_bound({owner, 0});
       place != mPlaces.end() && place->first.first == owner;) {
    const Entries::iterator entry = place->second;
    ++place;
    Drop(entry);
  }
}

void InflatedBlocks::Drop(Entries::iterator entry) {
  mNumBytes -= entry->mSize;
  mPlaces.erase(entry->mKey);
  mEntries.erase(entry);
}

}  // namespace QovJbf
