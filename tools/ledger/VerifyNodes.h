#pragma once

#include "ExpectedModel.h"
#include "FaultReporter.h"

namespace Qov::Tools {

/// Compares the nodes of an output, with their attributes and materials. Matches the results of its
/// geometries with the expected ones and compares their descriptors.
void VerifyNodes(ExpectedModel& model, const QovRyx::NodeTree& output, FaultReporter& reporter);

}  // namespace Qov::Tools
