#include "Qov/Jbf/OutputLocks.h"

#include <fcntl.h>

#include "OutputFile.h"

namespace QovJbf {

void CheckOutputIsFree(const std::string& path) {
  OpenAndLock(path, O_RDWR | O_CLOEXEC | O_NONBLOCK);  // the lock ends with the descriptor
}

OutputLocks::OutputLocks() { StartKeepingLocks(); }

OutputLocks::~OutputLocks() { StopKeepingLocks(); }

}  // namespace QovJbf
