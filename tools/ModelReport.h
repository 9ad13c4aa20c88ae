#pragma once

#include "ModelStatistics.h"
#include "NodeFilter.h"
#include "Output.h"
#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Draws the tree of a model with node sets, attributes and, if there are `statistics`, results,
/// each line under the node that it belongs to. Returns false if something in it could not be
/// read, which the lines say.
bool ReportNodes(const QovRyx::Tree& tree, const NodeFilter& filter,
                 const ModelStatistics* statistics, Output& output);
/// The current view, the paths and the sequencer; nothing if the model has none.
void ReportViews(const QovRyx::Tree& tree, Output& output);
/// The programs that wrote the file, oldest first; nothing if none is known.
void ReportHistory(const QovRyx::Tree& tree, Output& output);

}  // namespace Qov::Tools
