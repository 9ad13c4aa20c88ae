#pragma once

#include "DroppedResults.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Does the same as AppendResults in RyxMerge.h. Counts the results that are dropped.
void AppendResults(Tree& from, Tree& into, DroppedResults& dropped);

/// Does the same as AppendOtherInstanceResults in RyxMerge.h. Counts the results that are dropped.
void AppendOtherInstanceResults(Tree& from, Tree& into, DroppedResults& dropped);

}  // namespace QovRyx
