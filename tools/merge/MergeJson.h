#pragma once

#include <vector>

#include "Json.h"
#include "Qov/Ryx/Merge.h"
#include "ledger/Warnings.h"

namespace Qov::Tools {

/// Returns what a merge did (docs/json/merge.md).
Json MergeJson(const QovRyx::MergeRequest& request, const QovRyx::MergeReport& report,
               const std::vector<Warning>& warnings, bool isVerified);

}  // namespace Qov::Tools
