#pragma once

#include <vector>

#include "InputGroups.h"
#include "Json.h"
#include "Output.h"
#include "Warnings.h"

namespace Qov::Tools {

/// Returns true if a warning is about data in an input that the merge leaves out.
bool HasWarningOfLoss(const std::vector<Warning>& warnings);

/// Prints the warnings, each with its remedy, in colour where the output has colours. In a summary
/// one line stands for the same warning about several files.
void PrintWarnings(const std::vector<Warning>& warnings, LedgerDetail detail, Output& output);

/// Returns the warnings as JSON (docs/json/plan.md).
Json WarningsJson(const std::vector<Warning>& warnings);

}  // namespace Qov::Tools
