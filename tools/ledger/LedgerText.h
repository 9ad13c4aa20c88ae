#pragma once

#include <string>

#include "Ledger.h"
#include "Output.h"

namespace Qov::Tools {

/// Prints the ledger of each input and of the output as tables, with the names that change.
void PrintLedger(const Ledger& ledger, const std::string& outputPath, Output& output);

}  // namespace Qov::Tools
