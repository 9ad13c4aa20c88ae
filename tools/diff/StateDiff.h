#pragma once

#include "Qov/Ryx/Tree.h"
#include "diff/Difference.h"

namespace Qov::Tools {

/// What belongs to the models as a whole: the version, the history, the views and the sequencer.
void CompareStates(const QovRyx::Tree& a, const QovRyx::Tree& b, const DiffOptions& options,
                   DiffReport& report);

}  // namespace Qov::Tools
