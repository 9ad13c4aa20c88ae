#include "StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

namespace Qov {

void OccupyStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) != -1) continue;
    // The system assigns the lowest free descriptor. Without /dev, the root folder can be opened.
    if (open("/dev/null", O_RDONLY) == -1) static_cast<void>(open("/", O_RDONLY));
  }
}

}  // namespace Qov
