#include "MemoryFile.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace Qov::Fuzz {

MemoryFile::MemoryFile()
    : mDescriptor(::memfd_create("fuzz", 0)),
      mPath("/proc/self/fd/" + std::to_string(mDescriptor)) {
  if (mDescriptor < 0) std::abort();
}

MemoryFile::~MemoryFile() { ::close(mDescriptor); }

// NOLINTNEXTLINE(readability-make-member-function-const): it changes the file
void MemoryFile::SetContent(const std::uint8_t* bytes, std::size_t size) {
  if (::ftruncate(mDescriptor, 0) != 0) std::abort();
  if (::pwrite(mDescriptor, bytes, size, 0) != static_cast<ssize_t>(size)) std::abort();
}

std::string MemoryFile::GetContent() const {
  struct stat status {};
  if (::fstat(mDescriptor, &status) != 0) std::abort();
  std::string content(static_cast<std::size_t>(status.st_size), '\0');
  if (::pread(mDescriptor, content.data(), content.size(), 0) != status.st_size) std::abort();
  return content;
}

}  // namespace Qov::Fuzz
