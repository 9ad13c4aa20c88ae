#pragma once

#include "check/Container.h"
#include "check/ModelContent.h"

namespace Qov::Tools {

/// Checks the attribute maps, which are stored in the order of the nodes.
void CheckAttributes(Container& container, const ModelContent& model, Findings& findings);

}  // namespace Qov::Tools
