#pragma once

#include "ExpectedModel.h"
#include "FaultReporter.h"

namespace Qov::Tools {

/// Compares the values of all matched results, and the node sets, in stored order. Reports
/// progress. Raises the errors of reading an input, with its path.
void VerifyValues(ExpectedModel& model, const QovRyx::NodeTree& output, FaultReporter& reporter);

}  // namespace Qov::Tools
