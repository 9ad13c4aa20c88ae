#pragma once

#include <new>
#include <string>

#include "Qov/Export.h"

namespace Qov::Util {

/// The additional data of an error: the file, and the cause that the operating system reported.
/// Most errors are raised where the path is not known. A caller that knows the path adds it.
class QOV_EXPORT FileContext {
 public:
  /// Returns the path of the file, or an empty string if no path was set.
  const std::string& GetFilePath() const { return mPath; }
  /// Sets the path if none is set. The first path was set closest to the cause.
  void SetFilePath(const std::string& path) {
    if (mPath.empty()) mPath = path;
  }

  /// Returns the system's text for the failure ("Permission denied"), or an empty string.
  const std::string& GetCause() const { return mCause; }

 protected:
  FileContext() = default;
  FileContext(const FileContext&) = default;
  FileContext& operator=(const FileContext&) = default;
  ~FileContext() = default;
  void SetCause(const std::string& cause) { mCause = cause; }

 private:
  std::string mPath;
  std::string mCause;
};

/// There is not enough memory for the content of a file.
class QOV_EXPORT OutOfMemory : public std::bad_alloc, public FileContext {
 public:
  explicit OutOfMemory(const std::string& path) { SetFilePath(path); }
  const char* what() const noexcept override { return "Not enough memory"; }
};

/// Calls `work`, which reads or writes the file `path`, and adds the path to the errors that it
/// throws. Returns the result of `work`.
template <class Work>
auto WithFileContext(const std::string& path, Work work) {
  try {
    return work();
  } catch (FileContext& error) {
    error.SetFilePath(path);
    throw;
  } catch (const std::bad_alloc&) {
    throw OutOfMemory(path);
  }
}

}  // namespace Qov::Util
