#pragma once

#include "Output.h"

namespace Qov::Tools {

/// The program `ryx`: reads the command line, runs the subcommand that it names, and makes exit
/// statuses and lines on `errors` of what goes wrong.
int RunProgram(int argc, const char* const* argv, Output& output, Output& errors);

}  // namespace Qov::Tools
