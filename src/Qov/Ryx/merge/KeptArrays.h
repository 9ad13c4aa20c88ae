#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace QovRyx {

/// Bytes of arrays that are kept in memory, so that later arrays with the same hash can be compared
/// with them.
///
/// Arrays whose hash has occurred before replace those whose hash has occurred once: a mesh that
/// all files have is kept, and results that differ from file to file are not.
class KeptArrays {
 public:
  using Bytes = std::vector<unsigned char>;
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
  /// Keeps the array if there is memory for it.
  void Add(const Key& key, std::size_t array, Bytes bytes);

 private:
  struct Entry {
    std::size_t mArray;
    Bytes mBytes;
    bool mIsRepeated;  ///< True if the key has occurred more than once.
  };
  using Entries = std::multimap<Key, Entry>;

  void DropLastSingle();

  std::uint64_t mMemory;
  std::uint64_t mNumBytes = 0;
  Entries mEntries;
  std::vector<Entries::iterator>
      mSingles;  ///< Their key had occurred once when they were added; oldest first.
  std::set<Key> mSeen;
};

}  // namespace QovRyx
