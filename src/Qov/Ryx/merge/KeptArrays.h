#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "container/MallocBuffer.h"

namespace QovRyx {

/// The bytes of an array in the form in which Save stores them.
struct ArrayBytes {
  QovJbf::MallocBuffer mData;
  std::size_t mSize = 0;
};

/// Bytes of arrays that are kept in memory, so that later arrays with the same hash can be compared
/// with them.
///
/// Arrays that are likely to repeat, and those whose hash has occurred before, replace the others:
/// a mesh that all files have is kept, and results that differ from file to file are not.
class KeptArrays {
 public:
  using Bytes = std::shared_ptr<const ArrayBytes>;
  struct Key {
    std::uint64_t mSize;
    std::uint64_t mWidth;
    std::uint64_t mHigh;
    std::uint64_t mLow;
    auto operator<=>(const Key&) const = default;
  };

  explicit KeptArrays(std::uint64_t memory) : mMemory(memory) {}

  /// Returns the array with the same key and the same bytes, if it is kept.
  std::optional<std::size_t> Find(const Key& key, const Bytes& bytes);
  /// Keeps the array if there is memory for it and it has bytes. Returns true if its key has
  /// occurred before.
  bool Add(const Key& key, std::size_t array, Bytes bytes, bool isLikely);

 private:
  struct Entry {
    std::size_t mArray;
    Bytes mBytes;
    bool mIsPreferred;  ///< True if the array is likely to repeat, or has repeated.
  };
  using Entries = std::multimap<Key, Entry>;

  void DropLastOther();

  std::uint64_t mMemory;
  std::uint64_t mNumBytes = 0;
  Entries mEntries;
  std::vector<Entries::iterator>
      mOthers;  ///< Entries that were not preferred when they were added; oldest first.
  std::set<Key> mSeen;
};

}  // namespace QovRyx
