#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <utility>

#include "MallocBuffer.h"

namespace QovJbf {

/// The cache of decompressed blocks, which all readers of the process share. It drops the least
/// recently used blocks first. A block of the default size (200 MiB) fits. It serves readers that
/// verify a block before they return bytes of it, and readers that read backwards in a block. It is
/// used by one thread.
class BlockCache {
 public:
  static constexpr std::uint64_t kMaxBytes = std::uint64_t{256} << 20;

  static BlockCache& Instance();

  /// Copies `n` bytes at offset `within` of a block of `owner` to `target`. Returns false if the
  /// block is not in the cache.
  bool Read(const void* owner, std::size_t block, std::uint64_t within, void* target,
            std::size_t n);
  /// Drops blocks until a block of `size` bytes fits, and returns memory for it. Returns null if
  /// the block is larger than the cache or if there is no memory.
  MallocBuffer MakeRoom(std::uint64_t size);
  /// Adds a block. `content` is the memory that MakeRoom returned for `size`.
  void Add(const void* owner, std::size_t block, MallocBuffer content, std::uint64_t size);
  /// Sets the size of the cache, at most kMaxBytes.
  void SetSize(std::uint64_t numBytes);
  /// Drops all blocks of `owner`.
  void DropAll(const void* owner);
  /// Drops all blocks. They are decompressed again when they are needed.
  void Clear();

 private:
  using Key = std::pair<const void*, std::size_t>;
  struct Entry {
    Key mKey;
    MallocBuffer mContent;
    std::uint64_t mSize;
  };
  using Entries = std::list<Entry>;

  /// Returns the size plus an allowance for the cache's own data, because blocks can be tiny.
  static std::uint64_t GetCost(std::uint64_t size) { return size + 256; }
  void Drop(Entries::iterator entry);
  /// Drops blocks until a block with these costs fits.
  void DropBefore(std::uint64_t cost);

  Entries mEntries;  ///< The most recently used block comes first.
  std::map<Key, Entries::iterator> mPlaces;
  std::uint64_t mMost = kMaxBytes;
  std::uint64_t mNumBytes = 0;
};

}  // namespace QovJbf
