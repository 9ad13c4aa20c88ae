#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <utility>

#include "MallocBuffer.h"

namespace QovJbf {

/// The cache of decompressed blocks, which all readers of the process share: least recently used
/// blocks are dropped first. It has room for a block of the usual size (200 MiB). It is used by
/// readers that verify a block before they deliver from it, and by those that read backwards in
/// one. All reading is done on one thread.
class InflatedBlocks {
 public:
  static constexpr std::uint64_t kMostBytes = std::uint64_t{256} << 20;

  static InflatedBlocks& Instance();

  /// Copies `n` bytes of a block of `owner` from `within` on. Returns false if the cache does not
  /// hold the block.
  bool Read(const void* owner, std::size_t block, std::uint64_t within, void* target,
            std::size_t n);
  /// Drops blocks until one of `size` bytes fits, and returns memory for it; null if it is larger
  /// than the cache or there is no memory.
  MallocBuffer MakeRoom(std::uint64_t size);
  /// Adds a block in memory that MakeRoom returned for its size.
  void Add(const void* owner, std::size_t block, MallocBuffer content, std::uint64_t size);
  void DropThoseOf(const void* owner);

 private:
  using Key = std::pair<const void*, std::size_t>;
  struct Entry {
    Key mKey;
    MallocBuffer mContent;
    std::uint64_t mSize;
  };
  using Entries = std::list<Entry>;

  /// Counts what is kept for each block besides its content, because blocks can be tiny.
  static std::uint64_t CostOf(std::uint64_t size) { return size + 256; }
  void Drop(Entries::iterator entry);

  Entries mEntries;  ///< The most recently used one first.
  std::map<Key, Entries::iterator> mPlaces;
  std::uint64_t mNumBytes = 0;
};

}  // namespace QovJbf
