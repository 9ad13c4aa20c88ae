#pragma once

#include "ModelStatistics.h"
#include "NodeFilter.h"
#include "Output.h"
#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Draws the tree of a model with node sets, attributes and, if `statistics` are given, results,
/// each below its node. Returns false if a part could not be read, which the lines show.
bool ReportNodes(const QovRyx::Tree& tree, const NodeFilter& filter,
                 const ModelStatistics* statistics, Output& output);
/// Writes the current view, the paths and the sequencer, if the model has them.
void ReportViews(const QovRyx::Tree& tree, Output& output);
/// Writes the programs that wrote the file, oldest first.
void ReportHistory(const QovRyx::Tree& tree, Output& output);

}  // namespace Qov::Tools
