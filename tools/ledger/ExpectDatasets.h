#pragma once

#include <vector>

#include "ExpectedModel.h"
#include "Obstacles.h"

namespace Qov::Tools {

/// Adds the nodes of all models to `model`, below one group. With `join`, models that are merged
/// datasets themselves add the nodes below their group. The rules are written independently of the
/// merge, because they check it.
void ExpectDatasets(const std::vector<InputFile>& inputs, bool join, ExpectedModel& model,
                    std::vector<Obstacle>& obstacles);

}  // namespace Qov::Tools
