#pragma once

#include <CLI/App.hpp>

#include "Qov/Ryx/Selection.h"

namespace Qov::Tools {

/// Adds --nodes, --results and --instances, and the same with "without-". Each can be given several
/// times, with one pattern each. Patterns contain names as the program shows them (Escape).
void DeclareSelection(CLI::App& app, QovRyx::Selection& selection);

}  // namespace Qov::Tools
