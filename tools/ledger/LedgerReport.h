#pragma once

#include <string>

#include "Json.h"
#include "Ledger.h"
#include "Output.h"

namespace Qov::Tools {

/// The books of each input and of the output as tables, with the names that change.
void PrintLedger(const Ledger& ledger, const std::string& outputPath, Output& output);

/// The same for a document (docs/json/plan.md).
Json LedgerJson(const Ledger& ledger);

}  // namespace Qov::Tools
