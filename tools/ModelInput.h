#pragma once

#include <string>

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Reads a model file, or the views of a view-point file. Raises what Tree::Load raises; `tree`
/// holds then what had been read so far, which may be shown, but has not all its arrays.
void LoadModelOrViews(const std::string& path, QovRyx::Tree& tree);

}  // namespace Qov::Tools
