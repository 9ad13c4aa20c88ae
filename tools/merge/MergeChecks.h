#pragma once

#include <string>
#include <vector>

#include "Plan.h"
#include "Qov/Ryx/Merge.h"
#include "ledger/Faults.h"

/// Checks of `ryx merge` before a merge, and of its output. The mode and the names are those that
/// the library chooses; the effects are derived independently of it.
namespace Qov::Tools {

/// Returns the request as plans and verifications describe it, without the mode and the names.
MergeRequest DescribeMerge(const QovRyx::MergeRequest& request);

/// Chooses the mode and the names of a described request as the merge does. Reads the inputs for
/// that and raises the errors of reading.
void ChooseMerge(const QovRyx::MergeRequest& request, MergeRequest& described);

/// Finds inputs that are given twice, and options without effect.
std::vector<Warning> FindMergeWarnings(const QovRyx::MergeRequest& request,
                                       const MergeRequest& described);

/// Returns the plan of a merge: its effects, warnings and size. Reads descriptors, and values of
/// node sets only. Raises InvalidMethod if there is no model among the inputs.
MergePlan PlanMerge(const QovRyx::MergeRequest& request);

/// Compares the merged model at `path` with the inputs, as `ryx verify` does. Keeps the first
/// faults. Raises the errors of reading.
Faults VerifyMerge(const QovRyx::MergeRequest& request, const std::string& path);

}  // namespace Qov::Tools
