#pragma once

#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Copies the attribute "time" of the nearest group above each geometry to its results that have an
/// instance part and no such attribute, because the groups of a merge as instances have the times
/// of the first model only.
void TakeGroupTimes(Tree& tree);

}  // namespace QovRyx
