#pragma once

#include <sys/types.h>

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <string>

#include "Qov/Export.h"

struct stat;

namespace QovJbf {

/// Which file a path led to at one moment, and in which state: device, inode, size and modification
/// time. A file that is read over a long time is compared with it again and again, so that bytes of
/// two states never get mixed.
class QOV_EXPORT FileIdentity {
 public:
  /// Takes the identity of the open file `file`, which `path` led to. Raises ReadError.
  FileIdentity(std::string path, std::FILE* file);

  const std::string& GetPath() const { return mPath; }
  /// Size in bytes.
  std::uint64_t GetSize() const { return mSize; }

  /// Returns true if `path` leads to this very file, in whatever state.
  bool IsFileAt(const std::string& path) const;
  /// Raises ReadError, which names the file, if `file` is another one or in another state.
  void CheckUnchanged(std::FILE* file) const;
  /// The same for what the path leads to now; a file that is gone has changed.
  void CheckUnchanged() const;
  /// Raises the error of a file that has changed.
  [[noreturn]] void RaiseChanged() const;

 private:
  bool IsSameFile(const struct stat& status) const;
  bool IsSameState(const struct stat& status) const;

  std::string mPath;
  dev_t mDevice = 0;
  ino_t mInode = 0;
  std::uint64_t mSize = 0;
  std::timespec mModified{};
};

}  // namespace QovJbf
