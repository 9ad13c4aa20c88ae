#pragma once

#include <string>
#include <vector>

#include "Json.h"
#include "Output.h"
#include "stats/ResultStatistics.h"

namespace Qov::Tools {

/// Returns "0", "1", ... or "magnitude"; empty for results without components.
std::string ComponentText(const StatisticsRow& row);

/// Prints the figures as one table and the places of the extremes as another.
void PrintTables(const std::vector<StatisticsRow>& rows, const std::vector<std::string>& paths,
                 Output& output);

/// Prints one line for each row, after the names of the columns.
void PrintCsv(const std::vector<StatisticsRow>& rows, const std::vector<std::string>& paths,
              Output& output);

/// Returns the rows for a document (docs/json/stats.md).
Json RowsJson(const std::vector<StatisticsRow>& rows, const std::vector<std::string>& paths);

}  // namespace Qov::Tools
