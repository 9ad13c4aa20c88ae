#pragma once

#include <string>

namespace Qov::Tools {

/// Returns a text without line breaks as a field of a table of comma-separated values: in quotes if
/// it would otherwise be read as several fields.
std::string CsvText(const std::string& text);

}  // namespace Qov::Tools
