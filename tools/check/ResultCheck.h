#pragma once

#include "check/ResultLinks.h"

namespace Qov::Tools {

/// Reports results that share their name with another result of their geometry, and results that
/// have neither one tuple for each point nor one for each element. Both are warnings: programs read
/// such files, but look-ups by name find the first result only, and a viewer has nothing to place
/// the other values on.
void CheckResults(const ModelContent& model, ResultLinks& links, Findings& findings);

}  // namespace Qov::Tools
