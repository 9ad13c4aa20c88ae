#pragma once

#include "Output.h"

namespace Qov::Tools {

/// Runs the program `ryx`: parses the command line and runs its subcommand. Writes errors to
/// `errors` as lines. Returns the exit status.
int RunProgram(int argc, const char* const* argv, Output& output, Output& errors);

}  // namespace Qov::Tools
