#pragma once

#include "Qov/Ryx/Tree.h"
#include "diff/Difference.h"

namespace Qov::Tools {

/// Everything in which two loaded models differ. What cannot be compared counts as different.
/// Holds one array of each model at a time.
DiffReport DiffModels(const QovRyx::Tree& a, const QovRyx::Tree& b, const DiffOptions& options);

}  // namespace Qov::Tools
