#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "SafeOutput.h"

namespace Qov::Tools {

/// Writes a ZIP archive of stored (uncompressed) entries, each with 64-bit sizes (ZIP64).
class ZipArchive {
 public:
  explicit ZipArchive(SafeOutput& output) : mOutput(output) {}

  /// Begins an entry. Names are UTF-8. Raises OutOfBounds for a name of more than 65535 bytes.
  void Begin(const std::string& name);
  void Append(const void* data, std::size_t size);
  void End();
  /// Writes the directory at the end of the archive.
  void Close();

 private:
  struct Entry {
    std::string mName;
    std::uint64_t mPosition = 0;
    std::uint64_t mSize = 0;
    std::uint32_t mChecksum = 0;
  };

  SafeOutput& mOutput;
  std::vector<Entry> mEntries;
};

}  // namespace Qov::Tools
