#pragma once

#include "DroppedResults.h"
#include "Qov/Ryx/InstanceNames.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Does the same as GenerateLinkedResults in InstanceNames.h. Counts the results whose values are
/// replaced by a link.
void GenerateLinkedResults(Tree& tree, const PartLinksMap& links, DroppedResults& dropped);

}  // namespace QovRyx
