#pragma once

#include <string>

#include "Qov/Export.h"

namespace QovJbf {

/// Raises MiscellaneousError if another writer has locked the file at `path`. Leaves the file and
/// its locks as they are; a path that cannot be opened for writing is not an error here.
QOV_EXPORT void CheckOutputIsFree(const std::string& path);

/// While an object of this class lives, outputs that this process closes stay locked, so that it
/// can write them again before another one does. There is one such object at a time.
///
/// A file that is open for writing (JbFile) is locked by flock in any case. The lock is advisory
/// and ends with the process at the latest. Writing a file that another process has locked raises
/// MiscellaneousError. A file system without locks grants none, and then nothing is refused.
class QOV_EXPORT OutputLocks {
 public:
  OutputLocks();
  ~OutputLocks();
  OutputLocks(const OutputLocks&) = delete;
  OutputLocks& operator=(const OutputLocks&) = delete;
};

}  // namespace QovJbf
