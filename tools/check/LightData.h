#pragma once

#include "check/Container.h"
#include "check/ModelContent.h"

namespace Qov::Tools {

/// Reads the light data of the nodes: the descriptors of geometries and the places of node sets.
void ReadLightData(Container& container, ModelContent& model, Findings& findings);

}  // namespace Qov::Tools
