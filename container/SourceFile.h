#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <cstdio>
#include <string>

namespace QovJbf {

/// A file that is read again and again over a long time, without keeping a handle open for it.
///
/// All source files of the process share kMaximumOpenSources handles; when one more is needed,
/// the file that was read the longest time ago loses its own, and opens it again when it is next
/// read. Every error is a ReadError ("Unable to read from file") of StreamReader's.
class SourceFile {
 public:
  static constexpr std::size_t kMaximumOpenSources = 24;

  /// Takes the identity of the file (device, inode and length) from the handle `file`, which
  /// stays the caller's.
  SourceFile(std::string path, std::FILE* file);
  ~SourceFile();
  SourceFile(const SourceFile&) = delete;
  SourceFile& operator=(const SourceFile&) = delete;

  /// Reads `n` bytes at `position`. Raises also if the file was exchanged since it was first
  /// seen and had to be opened again.
  void Read(std::uint64_t position, void* target, std::size_t n);

  std::uint64_t GetLength() const { return mLength; }
  const std::string& GetPath() const { return mPath; }
  /// True if `path` is this very file.
  bool IsSameAs(const std::string& path) const;

  /// Takes its handle from the file that was read the longest time ago; false if none has one.
  static bool CloseOldest();

 private:
  bool IsSameAs(const struct stat& status) const;
  void Open();
  void Close();

  std::string mPath;
  dev_t mDevice = 0;
  ino_t mInode = 0;
  std::uint64_t mLength = 0;
  std::FILE* mFile = nullptr;
};

/// fopen that takes a handle from a source file when the process has none left; null if even that
/// does not help.
std::FILE* OpenSharingHandles(const std::string& path, const char* mode);

}  // namespace QovJbf
