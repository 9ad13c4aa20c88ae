#pragma once

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Builds a rack of 25 parts: posts, rails, shelves and bolts. All bolts link to the arrays of the
/// first one. The feet are a node set. There is a cut section, and there are view points.
void BuildAssembly(QovRyx::Tree& tree);

}  // namespace Qov::Tools
