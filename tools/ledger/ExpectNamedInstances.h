#pragma once

#include <vector>

#include "ExpectedModel.h"
#include "Obstacles.h"

namespace Qov::Tools {

/// Adds the nodes of the first model to `model`, and the results of all models with the names of
/// `ryx merge`. The rules are written independently of the merge, because they check it.
void ExpectNamedInstances(const MergeRequest& request, const std::vector<InputFile>& inputs,
                          ExpectedModel& model, std::vector<Obstacle>& obstacles);

}  // namespace Qov::Tools
