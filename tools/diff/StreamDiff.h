#pragma once

#include <string>

#include "diff/DiffReport.h"

namespace Qov::Tools {

/// Compares the streams of two files that no reader uses by their names and bytes. Adds a
/// difference for each stream that is in only one file, differs or cannot be read.
void CompareUnknownStreams(const std::string& pathA, const std::string& pathB, DiffReport& report);

}  // namespace Qov::Tools
