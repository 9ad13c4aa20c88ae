#pragma once

#include "ModelStatistics.h"
#include "NodeFilter.h"
#include "Output.h"
#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Draws the tree of a model with node sets, attributes and, if `statistics` are given, results,
/// each below its node. Lines for a terminal are cut to its width. Returns false if a part could
/// not be read, which the lines show.
bool ReportNodes(const QovRyx::Tree& tree, const NodeFilter& filter,
                 const ModelStatistics* statistics, Output& output);

/// Lines that are longer than the width of the terminal.
enum class LongLines { Kept, Cut };
/// Writes the current view, the paths and the sequencer, if the model has them.
void ReportViews(const QovRyx::Tree& tree, LongLines longLines, Output& output);
/// Writes the programs that wrote the file, oldest first.
void ReportHistory(const QovRyx::Tree& tree, LongLines longLines, Output& output);

}  // namespace Qov::Tools
