#pragma once

#include "Qov/Ryx/Tree.h"
#include "diff/DiffReport.h"

namespace Qov::Tools {

/// Compares the version, the history, the views and the sequencer of two models.
void CompareStates(const QovRyx::Tree& a, const QovRyx::Tree& b, const DiffOptions& options,
                   DiffReport& report);

}  // namespace Qov::Tools
