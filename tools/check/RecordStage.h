#pragma once

#include "check/Container.h"
#include "check/ModelContent.h"

namespace Qov::Tools {

/// Checks the materials, which are stored in the order of the nodes.
void CheckMaterials(Container& container, const ModelContent& model, Findings& findings);
void CheckHistory(Container& container, Findings& findings);
/// Checks the views, their paths and the sequencer, if the file has them.
void CheckViews(Container& container, Findings& findings);

}  // namespace Qov::Tools
