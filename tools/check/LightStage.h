#pragma once

#include "check/Container.h"
#include "check/ModelContent.h"

namespace Qov::Tools {

/// Reads what the nodes have in the light stream: the descriptors of geometries, the places of
/// node sets.
void ReadLightData(Container& container, ModelContent& model, Findings& findings);

/// Checks the attribute maps, which come in step with the tree.
void CheckAttributes(Container& container, const ModelContent& model, Findings& findings);

}  // namespace Qov::Tools
