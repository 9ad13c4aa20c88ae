#pragma once

#include "check/Container.h"
#include "check/ModelContent.h"

namespace Qov::Tools {

/// Reads the tree records and checks each of them alone.
void ReadTreeRecords(Container& container, ModelContent& model, Findings& findings);

}  // namespace Qov::Tools
