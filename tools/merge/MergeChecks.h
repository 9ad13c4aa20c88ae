#pragma once

#include <string>

#include "Plan.h"
#include "Qov/Ryx/Merge.h"
#include "ledger/Faults.h"

/// What `ryx merge` finds out before a merge, and in its output. The mode and the names are those
/// that the library chooses; the effects are derived independently of it.
namespace Qov::Tools {

/// Returns the plan of a merge: its effects, warnings and size. Reads descriptors and no values.
MergePlan PlanMerge(const QovRyx::MergeRequest& request);

/// Compares the merged model at `path` with the inputs, as `ryx verify` does. Keeps the first
/// faults. Raises the errors of reading.
Faults VerifyMerge(const QovRyx::MergeRequest& request, const std::string& path);

}  // namespace Qov::Tools
