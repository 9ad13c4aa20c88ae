#pragma once

#include <string>

#include "Qov/Export.h"

namespace QovJbf {

/// Raises MiscellaneousError if another writer has locked the file at `path`. Does not change the
/// file or its locks. A path that cannot be opened for writing is not an error here.
QOV_EXPORT void CheckOutputIsFree(const std::string& path);

/// Keeps the locks of outputs that this process closes, so that it can write them again before
/// another process does. The locks are released with the object. There can be one object at a time.
///
/// JbFile locks every file that is open for writing, by flock. The lock is advisory and ends with
/// the process at the latest. Writing a file that another process has locked raises
/// MiscellaneousError. On a file system without locks, no file is locked or refused.
class QOV_EXPORT OutputLocks {
 public:
  OutputLocks();
  ~OutputLocks();
  OutputLocks(const OutputLocks&) = delete;
  OutputLocks& operator=(const OutputLocks&) = delete;
};

}  // namespace QovJbf
