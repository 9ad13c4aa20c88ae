#pragma once

#include <string>

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Writes only the current view, the paths and the sequencer of the model to a new file.
void SaveViewPointFile(const QovRyx::Tree& tree, const std::string& path);

}  // namespace Qov::Tools
