#pragma once

#include "check/ModelContent.h"

namespace Qov::Tools {

/// Checks that the links between the records agree in both directions, contain no cycle, and reach
/// all nodes from one root.
void CheckTreeLinks(const ModelContent& model, Findings& findings);

}  // namespace Qov::Tools
