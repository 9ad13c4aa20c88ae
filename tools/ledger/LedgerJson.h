#pragma once

#include "Json.h"
#include "Ledger.h"

namespace Qov::Tools {

/// Returns the ledger as JSON (docs/json/plan.md).
Json LedgerJson(const Ledger& ledger);

}  // namespace Qov::Tools
