#pragma once

#include "CommandLine.h"

/// Does what the command line asks for and gives the exit status: 0, 2 after an error in a
/// merge, 4 if there is no model among the inputs. What keeps the view points from being added
/// to a merged model (the merge failed, or its copy cannot be made) is thrown.
int RunMerge(const CommandLine& commandLine);
