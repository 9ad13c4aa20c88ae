#include "Output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "Qov/Util/Raise.h"

namespace Qov::Tools {
namespace {

[[noreturn]] void RaiseFailure() {
  if (errno == EPIPE) throw ClosedPipe{};
  Util::Raise("tools/Output", Util::Exception::ErrorType::WriteError,
              std::string("Unable to write the output: ") + std::strerror(errno));
}

}  // namespace

void Output::Write(std::string_view bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), mStream) != bytes.size()) RaiseFailure();
}

void Output::Line(std::string_view text) {
  Write(text);
  if (std::fputc('\n', mStream) == EOF) RaiseFailure();
}

void Output::Flush() {
  if (std::fflush(mStream) != 0) RaiseFailure();
}

void OccupyStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) != -1) continue;
    static_cast<void>(open("/dev/null", O_RDONLY));  // writing there still fails
  }
}

}  // namespace Qov::Tools
