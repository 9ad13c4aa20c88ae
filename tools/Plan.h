#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Json.h"
#include "Output.h"
#include "ledger/InputGroups.h"
#include "ledger/Obstacles.h"
#include "ledger/SizeEstimate.h"
#include "ledger/Warnings.h"

namespace Qov::Tools {

/// The effects of a merge, found before it is done.
struct MergePlan {
  MergeRequest mRequest;
  std::vector<InputFile> mInputs;
  std::vector<Obstacle> mObstacles;
  std::optional<Ledger> mLedger;  ///< Absent if there would be no output.
  std::uint64_t mNumDuplicates = 0;
  SizeEstimate mSize;
  std::vector<Warning> mWarnings;

  bool HasSpace() const { return !mLedger || mSize.Fits(); }
  bool IsPossible() const { return mObstacles.empty() && HasSpace(); }
};

/// Finds the effects of a merge. `inputs` are those of the request; the warnings of the plan begin
/// with `warnings`.
MergePlan MakePlan(MergeRequest request, std::vector<InputFile> inputs,
                   std::vector<Warning> warnings);

void PrintPlan(const MergePlan& plan, LedgerDetail detail, Output& output);

/// Returns the plan as JSON (docs/json/plan.md).
Json PlanJson(const MergePlan& plan);

/// Returns the exit status of a plan: kSuccess, or kFindings if the merge would fail, or if there
/// are warnings and `isStrict` is true, or, for `ryx merge`, kTrouble if an input cannot be read.
int StatusOf(const MergePlan& plan, bool isStrict);

}  // namespace Qov::Tools
