#pragma once

#include <sys/types.h>

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <string>

#include "Qov/Export.h"

struct stat;

namespace QovJbf {

/// The identity of a file and its state at one moment: device, inode, size and modification time. A
/// file that is read over a long time is compared with its identity several times, so that bytes of
/// two states are not mixed.
class QOV_EXPORT FileIdentity {
 public:
  /// Takes the identity of `file`, which was opened at `path`. Raises ReadError.
  FileIdentity(std::string path, std::FILE* file);
  /// Does the same for a file descriptor.
  FileIdentity(std::string path, int descriptor);

  const std::string& GetPath() const { return mPath; }
  /// Returns the size in bytes.
  std::uint64_t GetSize() const { return mSize; }

  /// Returns true if `path` leads to the same file, in any state.
  bool IsFileAt(const std::string& path) const;
  /// Raises ReadError with the path if `file` is another file or has another state.
  void CheckUnchanged(std::FILE* file) const;
  /// Raises the same error if the path leads to another file or to none, or if the file has another
  /// state.
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
