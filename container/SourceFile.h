#pragma once

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string>

#include "Qov/Jbf/FileIdentity.h"

namespace QovJbf {

/// A file that is read again and again over a long time, without keeping a handle open for it.
///
/// All source files of the process share kMaximumOpenSources handles; when one more is needed,
/// the least recently used file loses its own, and opens it again when it is next read. Every
/// error is a ReadError.
class SourceFile {
 public:
  static constexpr std::size_t kMaximumOpenSources = 24;

  /// `identity` was taken when the file was first opened.
  explicit SourceFile(FileIdentity identity);
  ~SourceFile();
  SourceFile(const SourceFile&) = delete;
  SourceFile& operator=(const SourceFile&) = delete;

  /// Reads `n` bytes at `position`. Raises also if the file had to be opened again and has changed
  /// since it was first opened.
  void Read(std::uint64_t position, void* target, std::size_t n);

  const FileIdentity& GetIdentity() const { return mIdentity; }
  std::uint64_t GetLength() const { return mIdentity.GetSize(); }
  const std::string& GetPath() const { return mIdentity.GetPath(); }

  /// Closes the handle of the least recently used file; false if none has one.
  static bool CloseOldest();

 private:
  void Open();
  void Close();

  FileIdentity mIdentity;
  std::FILE* mFile = nullptr;
};

/// Returns what `open` returns. Takes handles from source files and tries again while it fails
/// because the process has none left.
template <class Open, class IsOpen>
auto RetryWithFewerHandles(const Open& open, const IsOpen& isOpen) {
  while (true) {
    const auto result = open();
    if (isOpen(result) || (errno != EMFILE && errno != ENFILE)) return result;
    if (!SourceFile::CloseOldest()) return result;
  }
}

/// Opens a file for reading; null if that fails.
std::FILE* OpenSharingHandles(const std::string& path);

}  // namespace QovJbf
