#pragma once

#include <vector>

#include "ExpectedModel.h"
#include "Obstacles.h"

namespace Qov::Tools {

/// Returns the expected output of a merge of inputs that could be read. Adds the reasons for which
/// they cannot be merged to `obstacles`; if there are any, the model is incomplete.
ExpectedModel ExpectModel(const MergeRequest& request, const std::vector<InputFile>& inputs,
                          std::vector<Obstacle>& obstacles);

/// Does the same for a run of RyxMerge, which depends on its mode and inputs only.
ExpectedModel ExpectModel(MergeMode mode, const std::vector<InputFile>& inputs,
                          std::vector<Obstacle>& obstacles);

}  // namespace Qov::Tools
