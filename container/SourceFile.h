#pragma once

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string>

#include "Descriptor.h"
#include "Qov/Jbf/FileIdentity.h"

namespace QovJbf {

/// A file that is read over a long time without a handle of its own.
///
/// All source files of the process share kMaximumOpenSources handles. If one more is needed, the
/// handle of the least recently used file is closed. That file is opened again when it is read
/// next. All errors are ReadError.
class SourceFile {
 public:
  static constexpr std::size_t kMaximumOpenSources = 24;

  /// Takes the identity that the file had when it was first opened.
  explicit SourceFile(FileIdentity identity);
  ~SourceFile();
  SourceFile(const SourceFile&) = delete;
  SourceFile& operator=(const SourceFile&) = delete;

  /// Reads `n` bytes at `position`. If the file has to be opened again, raises ReadError if it has
  /// changed since it was first opened.
  void Read(std::uint64_t position, void* target, std::size_t n);

  /// Returns a new descriptor of the file, which other threads may read from with pread. It is
  /// closed if the process has no handles left. Raises the errors of Read.
  Descriptor DuplicateHandle();

  const FileIdentity& GetIdentity() const { return mIdentity; }
  std::uint64_t GetLength() const { return mIdentity.GetSize(); }
  const std::string& GetPath() const { return mIdentity.GetPath(); }

  /// Closes the handle of the least recently used file. Returns false if no file has a handle.
  static bool CloseOldest();

 private:
  void Use();
  void Open();
  void Close();

  FileIdentity mIdentity;
  std::FILE* mFile = nullptr;
};

/// Returns the number of duplicated handles that workers may have at a time: a quarter of the
/// handles of the process, from 1 to 64.
std::size_t CountWorkerHandles();

/// Returns the result of `open`. If `open` fails because the process has no handles left, closes
/// handles of source files and calls it again.
template <class Open, class IsOpen>
auto RetryWithFewerHandles(const Open& open, const IsOpen& isOpen) {
  while (true) {
    const auto result = open();
    if (isOpen(result) || (errno != EMFILE && errno != ENFILE)) return result;
    if (!SourceFile::CloseOldest()) return result;
  }
}

/// Opens a file for reading. Returns null if that fails.
std::FILE* OpenSharingHandles(const std::string& path);

}  // namespace QovJbf
