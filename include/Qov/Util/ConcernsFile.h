#pragma once

#include <new>
#include <string>

#include "Qov/Export.h"

namespace Qov::Util {

/// The data that the errors of this system have besides their text: the file, and the cause that
/// the operating system reported. Most errors are raised where the file name is not known; a caller
/// that knows it adds it.
class QOV_EXPORT ConcernsFile {
 public:
  /// The path of the file, empty if nobody named it.
  const std::string& GetConcernedFile() const { return mPath; }
  /// The first name stays: it was given closest to the cause.
  void SetConcernedFile(const std::string& path) {
    if (mPath.empty()) mPath = path;
  }

  /// Returns the system's text for the failure ("Permission denied"), empty if there is none.
  const std::string& GetCause() const { return mCause; }

 protected:
  ConcernsFile() = default;
  ConcernsFile(const ConcernsFile&) = default;
  ConcernsFile& operator=(const ConcernsFile&) = default;
  ~ConcernsFile() = default;
  void SetCause(const std::string& cause) { mCause = cause; }

 private:
  std::string mPath;
  std::string mCause;
};

/// There is not enough memory for what a file holds.
class QOV_EXPORT OutOfMemory : public std::bad_alloc, public ConcernsFile {
 public:
  explicit OutOfMemory(const std::string& path) { SetConcernedFile(path); }
  const char* what() const noexcept override { return "Not enough memory"; }
};

/// Calls `work`, which reads or writes the file `path`, and names the file in its errors.
template <class Work>
auto Concerning(const std::string& path, Work work) {
  try {
    return work();
  } catch (ConcernsFile& error) {
    error.SetConcernedFile(path);
    throw;
  } catch (const std::bad_alloc&) {
    throw OutOfMemory(path);
  }
}

}  // namespace Qov::Util
