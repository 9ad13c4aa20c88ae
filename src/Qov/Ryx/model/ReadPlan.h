#pragma once

#include "Qov/Ryx/NumericArray.h"
#include "Qov/Ryx/Tree.h"
#include "container/ReadAhead.h"

namespace QovRyx {

/// Adds the part of a file that holds the array, if it is in a file.
void AddPart(const NumericArray& array, QovJbf::ReadAhead::Parts& parts);

/// Returns the parts that hold the arrays of a model, in the order of Save.
QovJbf::ReadAhead::Parts PlanReads(const NodeTree& nodes);

}  // namespace QovRyx
