#pragma once

#include "Qov/Ryx/Tree.h"
#include "diff/DiffReport.h"

namespace Qov::Tools {

/// Returns all differences between two loaded models, or subtrees of them, including the parts that
/// cannot be compared.
/// Keeps one array of each model in memory at a time.
DiffReport DiffModels(const QovRyx::Tree& a, const QovRyx::Tree& b, const DiffOptions& options);

}  // namespace Qov::Tools
