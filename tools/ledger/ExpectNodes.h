#pragma once

#include <vector>

#include "ExpectedModel.h"

/// The parts of ExpectModel.
namespace Qov::Tools {

/// An input's node with its results, under the names and with the links that it has there.
ExpectedNode ExpectNode(std::size_t input, const QovRyx::NodeTree::Node& entry);
/// An input's result as it is there.
ExpectedResult ExpectResult(std::size_t input, const Result& result);

/// All nodes of all models beneath one group.
void ExpectDatasets(const std::vector<InputFile>& inputs, ExpectedModel& model,
                    std::vector<Obstacle>& obstacles);
/// The nodes of the first model, with the results of all of them. Of a single model, just that.
void ExpectInstances(MergeMode mode, const std::vector<InputFile>& inputs, ExpectedModel& model,
                     std::vector<Obstacle>& obstacles);

}  // namespace Qov::Tools
