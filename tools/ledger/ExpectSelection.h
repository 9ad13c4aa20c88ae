#pragma once

#include "ExpectedModel.h"
#include "Qov/Ryx/Selection.h"

namespace Qov::Tools {

/// Removes what a selection leaves out from the expected model. Links to removed results are
/// replaced by their values. The rules are written independently of the merge, because they check
/// it.
void ExpectSelection(const QovRyx::Selection& selection, ExpectedModel& model);

}  // namespace Qov::Tools
