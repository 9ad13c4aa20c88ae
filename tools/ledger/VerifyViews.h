#pragma once

#include "ExpectedModel.h"
#include "FaultReporter.h"

namespace Qov::Tools {

/// Compares the current view, the sequencer and the view-point paths of an output.
void VerifyViews(ExpectedModel& model, const QovRyx::Tree& output, FaultReporter& reporter);

/// Compares the history of an output, but for the dates of the entries that the merge adds.
void VerifyHistory(ExpectedModel& model, const QovRyx::Tree& output, FaultReporter& reporter);

}  // namespace Qov::Tools
