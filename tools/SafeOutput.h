#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Qov::Tools {

/// A file that appears under its name only when it is complete. It is written beside that name, as
/// ".NAME.XXXXXX", and removed if it is not committed, also if a signal ends the program
/// (RemoveOutputsOnSignals).
class SafeOutput {
 public:
  /// Opens the temporary file. Raises ElementExists if `path` exists and `overwrite` is false, and
  /// WriteError if the file cannot be made.
  SafeOutput(std::string path, bool overwrite);
  ~SafeOutput();
  SafeOutput(const SafeOutput&) = delete;
  SafeOutput& operator=(const SafeOutput&) = delete;

  /// Writes at the current position. Raises WriteError.
  void Write(const void* data, std::size_t size);
  void Write(std::string_view text) { Write(text.data(), text.size()); }
  template <class T>
  void Write(std::span<const T> values) {
    Write(values.data(), values.size_bytes());
  }
  /// The number of bytes before the current position.
  std::uint64_t GetPosition() const { return mPosition; }
  /// Replaces bytes that were written before; the current position stays.
  void Patch(std::uint64_t position, std::string_view bytes);

  /// Flushes the file to the disk and closes it. Raises WriteError.
  void Finish();
  /// Finishes the file, if that was not done, and gives it its name. Raises WriteError.
  void Commit();
  const std::string& GetPath() const { return mPath; }

 private:
  [[noreturn]] void RaiseWriteError(int error) const;

  std::string mPath;
  std::string mTemporaryPath;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> mFile{nullptr, &std::fclose};
  std::uint64_t mPosition = 0;
};

/// Files and folders that appear together: the first file under its name is the last to appear.
class OutputSet {
 public:
  explicit OutputSet(bool overwrite) : mOverwrite(overwrite) {}
  /// Removes the folders that it made, if they are empty, unless all was committed.
  ~OutputSet();
  OutputSet(const OutputSet&) = delete;
  OutputSet& operator=(const OutputSet&) = delete;

  SafeOutput& Open(const std::string& path);
  /// Makes a folder, unless it exists.
  void MakeFolder(const std::string& path);
  void CommitAll();
  std::size_t GetNumFiles() const { return mFiles.size(); }

 private:
  bool mOverwrite;
  std::vector<std::unique_ptr<SafeOutput>> mFiles;
  std::vector<std::string> mNewFolders;
};

/// Lets SIGHUP, SIGINT and SIGTERM remove the temporary files and new folders of all outputs before
/// they end the program.
void RemoveOutputsOnSignals();

}  // namespace Qov::Tools
