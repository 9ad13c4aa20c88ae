#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <utility>

#include "MallocBuffer.h"

namespace QovJbf {

/// The cache of decompressed blocks, which all readers of the process share. The least recently
/// used blocks are dropped first. A block of the usual size (200 MiB) fits. Two kinds of readers
/// use it: those that verify a block before they deliver values from it, and those that read
/// backwards within a block. All reading is done on one thread.
class InflatedBlocks {
 public:
  static constexpr std::uint64_t kMostBytes = std::uint64_t{256} << 20;

  static InflatedBlocks& Instance();

  /// Copies `n` bytes of a block of `owner` from `within` on. Returns false if the cache does not
  /// hold the block.
  bool Read(const void* owner, std::size_t block, std::uint64_t within, void* target,
            std::size_t n);
  /// Drops blocks until a block of `size` bytes fits and returns memory for it. Returns null if the
  /// block is larger than the cache or if there is no memory.
  MallocBuffer MakeRoom(std::uint64_t size);
  /// Adds a block. `content` is the memory that MakeRoom returned for `size`.
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

  /// Returns the size with an allowance for the cache's own data, because blocks can be tiny.
  static std::uint64_t CostOf(std::uint64_t size) { return size + 256; }
  void Drop(Entries::iterator entry);

  Entries mEntries;  ///< The most recently used block comes first.
  std::map<Key, Entries::iterator> mPlaces;
  std::uint64_t mNumBytes = 0;
};

}  // namespace QovJbf
