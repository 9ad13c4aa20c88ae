#include <malloc.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "Program.h"
#include "StandardStreams.h"

namespace {

/// Makes malloc return large buffers, such as those of blocks, to the system at once. Otherwise it
/// keeps some of them for each thread. Free memory for arrays is kept.
void ReturnLargeBuffers() {
  constexpr int kLeastLarge = 4 << 20;
  constexpr int kMostKept = 16 << 20;
  ::mallopt(M_MMAP_THRESHOLD, kLeastLarge);
  ::mallopt(M_TRIM_THRESHOLD, kMostKept);
}

}  // namespace

int main(int argc, char** argv) {
  Qov::OccupyStandardStreams();
  ReturnLargeBuffers();
  std::signal(SIGPIPE, SIG_IGN);  // writing to a closed pipe returns an error instead
  std::signal(SIGXFSZ, SIG_IGN);  // a file at its size limit is reported as an error
  Qov::Tools::Output output(stdout, Qov::Tools::DetectStyle(STDOUT_FILENO));
  // Errors that cannot be written are ignored, because the status reports them, too.
  Qov::Tools::Output errors(stderr, Qov::Tools::DetectStyle(STDERR_FILENO),
                            Qov::Tools::Output::Loss::Ignored);
  return Qov::Tools::RunProgram(argc, argv, output, errors);
}
