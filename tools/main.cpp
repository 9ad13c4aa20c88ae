#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "Program.h"
#include "StandardStreams.h"

int main(int argc, char** argv) {
  Qov::OccupyStandardStreams();
  std::signal(SIGPIPE, SIG_IGN);  // a closed pipe is noticed where it is written to
  Qov::Tools::Output output(stdout, Qov::Tools::DetectStyle(STDOUT_FILENO));
  // A complaint that nobody reads is no reason to stop: the status tells the same.
  Qov::Tools::Output errors(stderr, Qov::Tools::DetectStyle(STDERR_FILENO),
                            Qov::Tools::Output::Loss::Ignored);
  return Qov::Tools::RunProgram(argc, argv, output, errors);
}
