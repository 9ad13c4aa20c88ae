#pragma once

#include <cstdint>
#include <vector>

#include "Qov/Ryx/NumericArray.h"

namespace Qov::Tools {

/// The values of an array, which are kept in their stored form until they are needed. The memory is
/// used again for the next array.
class StoredValues {
 public:
  /// Replaces the values by those of the array. Verifies their checksums, and raises the errors of
  /// NumericArray::GetValues.
  void Read(const QovRyx::NumericArray& array);

  std::size_t GetSize() const { return mElements.size(); }
  /// Returns true if the values are the same to the last bit, because the stored bytes are. Returns
  /// false if that is not known.
  bool HasSameBytes(const StoredValues& other) const {
    return mShuffledWidth == other.mShuffledWidth && mElements == other.mElements;
  }
  const std::vector<std::uint32_t>& GetValues();

 private:
  std::vector<std::uint32_t> mElements;
  std::uint8_t mShuffledWidth = 0;  ///< The width that mElements are shuffled by, or 0.
};

}  // namespace Qov::Tools
