#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>

#include "SafeOutput.h"

namespace Qov::Tools {

/// Bytes that are needed later than they are made, in a temporary file without a name.
class SpilledBytes {
 public:
  /// Raises WriteError if the system gives no temporary file.
  SpilledBytes();

  /// Appends bytes. Raises WriteError.
  void Append(const void* data, std::size_t size);
  template <class T>
  void Append(std::span<const T> values) {
    Append(values.data(), values.size_bytes());
  }
  std::uint64_t GetSize() const { return mSize; }
  /// Reads bytes from a position; they must be there. Raises ReadError.
  void Read(std::uint64_t position, void* target, std::size_t size);
  /// Copies all bytes to the end of `output`.
  void CopyTo(SafeOutput& output);

 private:
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> mFile;
  std::uint64_t mSize = 0;
  bool mIsReading = false;
};

}  // namespace Qov::Tools
