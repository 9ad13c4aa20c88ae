#pragma once

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// A rack of 25 parts: posts, rails, shelves and bolts, all bolts with the arrays of the first
/// one; cut sections; the feet as a node set; view points.
void BuildAssembly(QovRyx::Tree& tree);

}  // namespace Qov::Tools
