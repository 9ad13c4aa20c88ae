#pragma once

#include "Output.h"
#include "Qov/Ryx/Merge.h"

namespace Qov::Tools {

/// Returns the word that stands for a value on the command line, such as "auto" or "stem".
const char* NameOf(QovRyx::MergeMode mode);
const char* NameOf(QovRyx::MergedNames names);
const char* NameOf(QovRyx::MergedViews views);

/// Prints what a merge did: the mode and the names with the reason, what was shared and left out,
/// and the sizes.
void PrintMerge(const QovRyx::MergeRequest& request, const QovRyx::MergeReport& report,
                Output& output);

/// Returns true if the counts of a report contain something that the merge left out.
bool HasLeftOut(const QovRyx::MergeReport& report);

}  // namespace Qov::Tools
