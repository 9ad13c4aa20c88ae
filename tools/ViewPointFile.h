#pragma once

#include <string>

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Writes the model's current view, paths and sequencer, and nothing else, to a new file.
void SaveViewPointFile(const QovRyx::Tree& tree, const std::string& path);

}  // namespace Qov::Tools
