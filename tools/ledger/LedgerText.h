#pragma once

#include <map>
#include <string>

#include "InputGroups.h"
#include "Ledger.h"
#include "Output.h"

namespace Qov::Tools {

/// Prints the ledger of each input and of the output as tables, with the names that change. In a
/// summary a line such as "3 to 500: as 2" stands for inputs with the ledger of an earlier one.
void PrintLedger(const Ledger& ledger, const std::string& outputPath, LedgerDetail detail,
                 Output& output);

/// Returns the counts of the rules by which items of an input are dropped, and of items that no
/// rule explains, as a list.
std::string DropsText(const InputTally& tally);
/// Returns the same of the rules by which items of the output are made.
std::string MadeText(const OutputTally& tally);
/// Returns an explanation of each rule and each kind of node that the ledger contains, by name.
std::map<std::string, std::string> ExplainRules(const Ledger& ledger);

}  // namespace Qov::Tools
