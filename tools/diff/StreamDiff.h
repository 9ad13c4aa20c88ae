#pragma once

#include <string>

#include "diff/Difference.h"

namespace Qov::Tools {

/// Compares the streams of two files that no reader uses: their names and their bytes. Adds a
/// difference for each that is in one file only, differs or cannot be read.
void CompareUnknownStreams(const std::string& pathA, const std::string& pathB, DiffReport& report);

}  // namespace Qov::Tools
