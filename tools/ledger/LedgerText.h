#pragma once

#include <string>

#include "InputGroups.h"
#include "Ledger.h"
#include "Output.h"

namespace Qov::Tools {

/// Prints the ledger of each input and of the output as tables, with the names that change. In a
/// summary a line such as "3 to 500: as 2" stands for inputs with the ledger of an earlier one.
void PrintLedger(const Ledger& ledger, const std::string& outputPath, Detail detail,
                 Output& output);

}  // namespace Qov::Tools
