#pragma once

#include "Json.h"
#include "Output.h"
#include "diff/DiffReport.h"

namespace Qov::Tools {

/// Writes a line per difference, and a summary.
void PrintReport(const DiffReport& report, Output& output);

/// Adds the same as members of a document (docs/json/diff.md).
void AddJson(const DiffReport& report, Json& document);

}  // namespace Qov::Tools
