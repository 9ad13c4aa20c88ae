#pragma once

#include <string>

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Reads a model file, or the views of a view-point file. Raises what Tree::Load raises; `tree`
/// holds then what had been read so far, which may be shown, but has not all its arrays.
void LoadModelOrViews(const std::string& path, QovRyx::Tree& tree);

/// Reads what can be read of such a file. Returns what went wrong and where the reading stopped,
/// not escaped; an empty text if the file could be read whole.
std::string LoadWhatCanBeRead(const std::string& path, QovRyx::Tree& tree);

/// Whether there is more in the tree than an empty root.
bool HoldsNodes(const QovRyx::Tree& tree);
/// Whether anything was read into the tree.
bool HoldsAnything(const QovRyx::Tree& tree);

}  // namespace Qov::Tools
