#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <utility>

#include "MallocBuffer.h"

namespace QovJbf {

/// Whole blocks that were inflated for readers that go to and fro in them, of all readers of the
/// process: so many bytes that a block of the usual size finds room. Who reads the arrays of a file
/// in the order in which they lie has none here. All reading is done on one thread.
class InflatedBlocks {
 public:
  static constexpr std::uint64_t kMostBytes = std::uint64_t{256} << 20;

  static InflatedBlocks& Instance();

  /// Copies `n` bytes of a block of `owner` from `within` on; false if the block is not here.
  bool Read(const void* owner, std::size_t block, std::uint64_t within, void* target,
            std::size_t n);
  /// Takes in a block of at most kMostBytes. Those that were not asked for longest make room.
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

  void Drop(Entries::iterator entry);

  Entries mEntries;  ///< The one that was asked for last in front.
  std::map<Key, Entries::iterator> mPlaces;
  std::uint64_t mNumBytes = 0;
};

}  // namespace QovJbf
