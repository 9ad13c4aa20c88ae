#pragma once

#include "check/Container.h"
#include "check/ModelContent.h"

namespace Qov::Tools {

/// Checks where arrays and node sets lie in the heavy stream, that the pieces of node sets agree,
/// and that meshes hold together: elements name points that there are.
void CheckHeavyData(Container& container, ModelContent& model, Findings& findings);

}  // namespace Qov::Tools
