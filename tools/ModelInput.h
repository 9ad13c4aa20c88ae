#pragma once

#include <string>

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Reads a model file, or the views of a view-point file. Raises the errors of Tree::Load. After an
/// error `tree` contains the parts that were read; some of their arrays may be missing.
void LoadModelOrViews(const std::string& path, QovRyx::Tree& tree);

/// Reads as much of such a file as possible. Returns the error and its place, not escaped; empty if
/// the whole file was read.
std::string LoadWhatCanBeRead(const std::string& path, QovRyx::Tree& tree);

/// Returns true if the tree has more than an empty root.
bool HoldsNodes(const QovRyx::Tree& tree);
/// Returns true if anything was read into the tree.
bool HoldsAnything(const QovRyx::Tree& tree);

}  // namespace Qov::Tools
