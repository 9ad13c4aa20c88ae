#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "Program.h"
#include "StandardStreams.h"
#include "container/MallocBuffer.h"

int main(int argc, char** argv) {
  Qov::OccupyStandardStreams();
  QovJbf::ReturnLargeBuffers();
  std::signal(SIGPIPE, SIG_IGN);  // writing to a closed pipe returns an error instead
  std::signal(SIGXFSZ, SIG_IGN);  // a file at its size limit is reported as an error
  Qov::Tools::Output output(stdout, Qov::Tools::DetectStyle(STDOUT_FILENO));
  // Errors that cannot be written are ignored, because the status reports them, too.
  Qov::Tools::Output errors(stderr, Qov::Tools::DetectStyle(STDERR_FILENO),
                            Qov::Tools::Output::Loss::Ignored);
  return Qov::Tools::RunProgram(argc, argv, output, errors);
}
