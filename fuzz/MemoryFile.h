#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Qov::Fuzz {

/// A file in memory that has a path, for code that opens files.
class MemoryFile {
 public:
  MemoryFile();
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  void SetContent(const std::uint8_t* bytes, std::size_t size);
  std::string GetContent() const;
  const std::string& GetPath() const { return mPath; }

 private:
  int mDescriptor;
  std::string mPath;
};

}  // namespace Qov::Fuzz
