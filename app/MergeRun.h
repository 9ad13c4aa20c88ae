#pragma once

#include "CommandLine.h"

/// Does what the command line asks for and returns the exit status: 0, 2 after an error in a merge
/// or in the checks before it, 4 if there is no model among the inputs. Throws std::runtime_error
/// if view points cannot be added to a merged model because the merge failed or its copy cannot be
/// made.
int RunMerge(const CommandLine& commandLine);
