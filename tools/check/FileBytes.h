#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "container/Descriptor.h"

namespace Qov::Tools {

/// Random access to the bytes of a file.
class FileBytes {
 public:
  /// Raises MiscellaneousError if this is not a readable regular file.
  explicit FileBytes(const std::string& path);

  std::uint64_t GetLength() const { return mLength; }
  bool Holds(std::uint64_t position, std::uint64_t size) const {
    return position <= mLength && size <= mLength - position;
  }
  /// Reads bytes that must be inside the file. Raises ReadError if that fails.
  void Read(std::uint64_t position, void* target, std::size_t n) const;
  /// Returns the descriptor, which other threads may read from.
  const std::shared_ptr<const QovJbf::Descriptor>& GetFile() const { return mpFile; }

 private:
  std::shared_ptr<const QovJbf::Descriptor> mpFile;
  std::uint64_t mLength = 0;
};

}  // namespace Qov::Tools
