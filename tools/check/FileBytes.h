#pragma once

#include <cstdint>
#include <fstream>
#include <string>

namespace Qov::Tools {

/// The bytes of a file, by their place.
class FileBytes {
 public:
  /// Raises MiscellaneousError for what is no file that can be read.
  explicit FileBytes(const std::string& path);

  std::uint64_t GetLength() const { return mLength; }
  bool Holds(std::uint64_t position, std::uint64_t size) const {
    return position <= mLength && size <= mLength - position;
  }
  /// The bytes must be there; raises ReadError if they cannot be read all the same.
  void Read(std::uint64_t position, void* target, std::size_t n);

 private:
  std::ifstream mFile;
  std::uint64_t mLength = 0;
};

}  // namespace Qov::Tools
