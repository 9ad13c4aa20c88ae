#pragma once

#include <vector>

#include "ExpectedModel.h"

namespace Qov::Tools {

/// What of the files stands against a merge: inputs that cannot be read, an output that is one of
/// them or cannot be written, the copy of an earlier run.
std::vector<Obstacle> FindFileObstacles(const MergeRequest& request,
                                        const std::vector<InputFile>& inputs);

}  // namespace Qov::Tools
