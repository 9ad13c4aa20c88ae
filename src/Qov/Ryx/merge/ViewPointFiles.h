#pragma once

#include <string>

#include "MergeSteps.h"
#include "Qov/Ryx/Tree.h"

/// View points of view-point files and of further models.
namespace QovRyx {

/// Returns true for the name of a view-point file.
inline bool IsViewPointFile(const std::string& path) { return path.ends_with(".vpt"); }

/// Reads the views of a view-point file and discards them, so that an error is raised before the
/// merge and not after it.
void CheckViewPointFile(const std::string& path);

/// Adds the paths of a view-point file to the model, and replaces its current view and sequencer.
/// Returns true if the model had these.
bool AddViewPoints(Tree& tree, const std::string& path, const Reporter& report);

/// Adds the paths of a model file to the model. Takes the current view and the sequencer too if the
/// model has none. Returns false if the file has some that are left out.
bool AppendViewPaths(Tree& tree, const std::string& path);

}  // namespace QovRyx
