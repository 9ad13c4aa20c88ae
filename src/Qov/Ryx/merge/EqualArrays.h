#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include "KeptArrays.h"
#include "Qov/Ryx/NumericArray.h"
#include "model/SkippedBytes.h"

namespace QovRyx {

/// The means of a search for equal arrays. Tests use other values.
struct SearchLimits {
  /// Bytes of arrays that are in memory to be compared. Less is used if less is free.
  std::uint64_t mMemory = std::uint64_t{256} << 20;
  /// Bytes of arrays that are kept in memory while the others are hashed.
  std::uint64_t mKept = std::uint64_t{24} << 20;
  /// The largest array that is read as a whole.
  std::uint64_t mWhole = std::uint64_t{256} << 20;
  /// Bytes that the search may skip in a file.
  SkipLimit mSkips;
  /// The bits of both halves of the hash that are used.
  std::uint64_t mHashMask = std::numeric_limits<std::uint64_t>::max();
};

struct EqualArrays {
  /// For each array, the index of the first array that is equal to it, which may be its own.
  std::vector<std::size_t> mFirst;
  /// Arrays that may be equal to others, but that were not compared because that would be too slow.
  std::uint64_t mNotCompared = 0;
};

/// A search for arrays that have the same size, the same width and the same bytes. Arrays without
/// values are not equal to any other.
///
/// The caller examines each array once, those of a file in stored order. An array is hashed if
/// another one has the same size and width. If its hash has occurred before, it is compared byte by
/// byte with that array, if it is kept in memory (KeptArrays). So a file is usually decompressed
/// once. The other arrays with equal hashes are compared at the end: the first one of each group is
/// in memory then, in parts if it is large, and the others are read in stored order. An array that
/// is stored in another form than Save writes, for example by an older version, is in memory as a
/// whole, twice if it is hashed, one at a time.
class ArraySearch {
 public:
  struct Candidate {
    const NumericArray* mpArray;  ///< Must outlive the search.
    bool mIsLikely;               ///< True if it is likely that others are equal to it.
  };
  using Candidates = std::vector<Candidate>;

  ArraySearch(Candidates candidates, const SearchLimits& limits);
  ~ArraySearch();
  ArraySearch(const ArraySearch&) = delete;
  ArraySearch& operator=(const ArraySearch&) = delete;

  /// Returns the arrays that Examine reads, those of each file in stored order.
  std::vector<std::size_t> ListToRead() const;

  enum class Verdict {
    New,       ///< It differs from all arrays that were examined before.
    Equal,     ///< It is equal to one of them.
    Undecided  ///< It has the hash of one of them. Finish decides.
  };
  struct Examined {
    Verdict mVerdict = Verdict::New;
    KeptArrays::Bytes mpBytes;  ///< Null if the array was not read, or not as a whole.
  };
  /// Examines array `i`. Raises the errors of StreamReader::Read.
  Examined Examine(std::size_t i);

  /// Ends the search. Raises the errors of StreamReader::Read and VerifyBefore, because the arrays
  /// that were read are verified, and ReadError if a file has changed.
  EqualArrays Finish();

 private:
  class State;
  std::unique_ptr<State> mpState;
};

/// Examines all arrays, and returns the result. Raises the errors of ArraySearch.
EqualArrays FindEqualArrays(const ArraySearch::Candidates& arrays, const SearchLimits& limits = {});

}  // namespace QovRyx
