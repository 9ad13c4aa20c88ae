#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "container/SignalRemovals.h"
#include "container/TemporaryOutput.h"

namespace Qov::Tools {

/// A buffered file that appears under its name only when it is complete (TemporaryOutput).
class SafeOutput {
 public:
  /// Opens the temporary file. Raises the errors of TemporaryOutput.
  SafeOutput(std::string path, bool overwrite);
  /// Makes an output whose bytes are counted and dropped.
  explicit SafeOutput(std::string path) : mPath(std::move(path)) {}
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

  /// Flushes the file to the disk and closes it. It keeps its temporary name. Raises WriteError.
  void Finish();
  /// Finishes the file, if that was not done, and gives it its name. Raises the errors of
  /// TemporaryOutput::Commit.
  void Commit();
  const std::string& GetPath() const { return mPath; }

 private:
  [[noreturn]] void RaiseWriteError(int error) const;

  const std::string mPath;
  std::optional<QovJbf::TemporaryOutput> mOutput;  ///< Nothing if the bytes are dropped.
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> mFile{nullptr, &std::fclose};
  std::uint64_t mPosition = 0;
};

/// Files and folders that appear together: the first file under its name is the last to appear.
class OutputSet {
 public:
  /// With `discard`, the bytes of all files are counted and dropped.
  explicit OutputSet(bool overwrite, bool discard = false)
      : mOverwrite(overwrite), mDiscard(discard) {}
  /// Removes the folders that it made, if they are empty, unless all was committed.
  ~OutputSet();
  OutputSet(const OutputSet&) = delete;
  OutputSet& operator=(const OutputSet&) = delete;

  SafeOutput& Open(const std::string& path);
  /// Makes a folder, unless it exists.
  void MakeFolder(const std::string& path);
  void CommitAll();
  std::size_t GetNumFiles() const { return mFiles.size(); }
  std::uint64_t GetNumBytes() const;

 private:
  bool mOverwrite;
  bool mDiscard;
  std::vector<std::unique_ptr<SafeOutput>> mFiles;
  /// The folders that were made, with the entries that let signals remove them.
  std::vector<std::pair<std::string, QovJbf::SignalRemoval*>> mNewFolders;
};

}  // namespace Qov::Tools
