#pragma once

#include "check/Container.h"
#include "check/ModelContent.h"

namespace Qov::Tools {

/// Checks the places of arrays and node sets in the heavy stream, the pieces of node sets, and the
/// meshes: the points of elements must exist.
void CheckHeavyData(Container& container, ModelContent& model, Findings& findings);

}  // namespace Qov::Tools
