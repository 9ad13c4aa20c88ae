#include "InflatedBlocks.h"

#include <cstdlib>
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

MallocBuffer InflatedBlocks::MakeRoom(std::uint64_t size) {
  if (size > kMostBytes) return nullptr;
  while (!mEntries.empty() && mNumBytes + CostOf(size) > kMostBytes) {
    Drop(std::prev(mEntries.end()));
  }
  return MallocBuffer(static_cast<unsigned char*>(std::malloc(size > 0 ? size : 1)));
}

void InflatedBlocks::Add(const void* owner, std::size_t block, MallocBuffer content,
                         std::uint64_t size) {
  mEntries.push_front({{owner, block}, std::move(content), size});
  mPlaces[{owner, block}] = mEntries.begin();
  mNumBytes += CostOf(size);
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
  mNumBytes -= CostOf(entry->mSize);
  mPlaces.erase(entry->mKey);
  mEntries.erase(entry);
}

}  // namespace QovJbf
