#pragma once

#include <new>
#include <string>

#include "Qov/Export.h"

namespace Qov::Util {

/// What the errors of this system have beside their text: the file that they are about. Most
/// errors are raised where only bytes are known; who knows the file names it on the way up.
class QOV_EXPORT ConcernsFile {
 public:
  /// The path of the file, empty if nobody named it.
  const std::string& GetConcernedFile() const { return mPath; }
  /// The first name stays: it was given closest to the cause.
  void SetConcernedFile(const std::string& path) {
    if (mPath.empty()) mPath = path;
  }

 protected:
  ConcernsFile() = default;
  ConcernsFile(const ConcernsFile&) = default;
  ConcernsFile& operator=(const ConcernsFile&) = default;
  ~ConcernsFile() = default;

 private:
  std::string mPath;
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
