#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "Qov/Ryx/NumericArray.h"
#include "model/SkippedBytes.h"

namespace QovRyx {

/// The means of a search for equal arrays. Tests use other values.
struct SearchLimits {
  /// Bytes of arrays that are in memory to be compared. Less is used if less is free.
  std::uint64_t mMemory = std::uint64_t{256} << 20;
  /// Bytes of arrays that are kept in memory while the others are hashed.
  std::uint64_t mKept = std::uint64_t{48} << 20;
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

/// Finds arrays that have the same size, the same width and the same bytes. Arrays without values
/// are not equal to any other.
///
/// Arrays of which another one has the same size and width are hashed, each file in stored order.
/// An array whose hash has occurred before is compared byte by byte with that array, if it is kept
/// in memory (KeptArrays). So a file is usually decompressed once. Arrays with equal hashes that
/// were not compared that way are compared afterwards: the first one of each group is in memory
/// then, in parts if it is large, and the others are read in stored order. An array that is stored
/// in another form than Save writes, for example by an older version, is in memory as a whole, one
/// at a time.
///
/// Raises the errors of StreamReader::Read and VerifyBefore, because the arrays that were read are
/// verified, and ReadError if a file has changed.
EqualArrays FindEqualArrays(const std::vector<const NumericArray*>& arrays,
                            const SearchLimits& limits = {});

}  // namespace QovRyx
