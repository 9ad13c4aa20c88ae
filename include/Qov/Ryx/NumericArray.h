#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "Qov/Ryx/DataLoader.h"
#include "Qov/Util/Assert.h"

namespace QovRyx {

/// An array of 4-byte elements, std::uint32_t or float. An item has `width` elements: 1 for
/// scalars, 3 for vectors. The values are in a file or in memory. Copies share them.
class NumericArray {
 public:
  /// Makes an empty array of width 1.
  NumericArray() = default;
  /// Makes an array of zeros in memory. `size` is in bytes.
  NumericArray(std::uint64_t size, std::uint8_t width)
      : mSize(size),
        mWidth(width),
        mpData(std::make_shared<std::vector<std::uint32_t>>(size / kElementSize)) {}
  /// Makes an array whose values are in a file. `size` is in bytes.
  NumericArray(std::uint64_t size, std::uint8_t width, std::shared_ptr<const DataLoader> loader)
      : mSize(size), mWidth(width), mpLoader(std::move(loader)) {}

  /// Makes an array in memory with these values.
  template <class T>
  static NumericArray Of(const std::vector<T>& values, std::uint8_t width = 1) {
    NumericArray array(values.size() * sizeof(T), width);
    array.CopyMemoryFrom(values);
    return array;
  }

  std::uint8_t GetWidth() const { return mWidth; }
  std::uint64_t GetNumElements() const { return mSize / kElementSize; }
  /// Returns the size in bytes.
  std::uint64_t GetSize() const { return mSize; }
  const std::shared_ptr<const DataLoader>& GetLoader() const { return mpLoader; }
  /// Returns an address that is the same for all copies of an array in memory, or null if the
  /// values are not in memory.
  const void* GetMemory() const { return mpData.get(); }

  /// Copies the values to an array in memory that has exactly their size.
  template <class T>
  void CopyMemoryFrom(const std::vector<T>& rVector) {
    static_assert(sizeof(T) == kElementSize);
    QOV_ASSERT(mSize == rVector.size() * sizeof(T));
    if (!rVector.empty()) std::memcpy(mpData->data(), rVector.data(), mSize);
  }

  /// Replaces `values`, whose memory is reused, by all values. Their bits are unchanged for any T.
  /// An array without values in memory or in a file is empty, for example that of a dangling link.
  /// Values in a file are read and verified before this returns. Raises the errors of
  /// DataLoader::LoadTo.
  template <class T>
  void GetValues(std::vector<T>& values) const {
    static_assert(sizeof(T) == kElementSize);
    if (mpLoader && mpLoader->GetCount() != 0) {
      mpLoader->LoadTo(values);
      return;
    }
    values.resize(mpData ? mpData->size() : 0);
    if (!values.empty()) std::memcpy(values.data(), mpData->data(), values.size() * sizeof(T));
  }

 private:
  std::uint64_t mSize = 0;
  std::uint8_t mWidth = 1;
  std::shared_ptr<std::vector<std::uint32_t>> mpData;
  std::shared_ptr<const DataLoader> mpLoader;
};

}  // namespace QovRyx
