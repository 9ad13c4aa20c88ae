#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

#include "Qov/Util/Exception.h"
#include "SafeOutput.h"

namespace Qov::Tools {

/// Bytes that are needed later than they are made, in a temporary file without a name.
class SpilledBytes {
 public:
  /// Makes the file in the folder of `output`, because the bytes have to fit there anyway. Raises
  /// WriteError.
  explicit SpilledBytes(const SafeOutput& output);

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
  [[noreturn]] void RaiseFailure(Util::Exception::ErrorType type) const;

  std::string mFolder;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> mFile{nullptr, &std::fclose};
  std::uint64_t mSize = 0;
  bool mIsReading = false;
};

}  // namespace Qov::Tools
