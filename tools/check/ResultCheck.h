#pragma once

#include "check/ResultLinks.h"

namespace Qov::Tools {

/// Reports results that share their name with another result of their geometry, and results that
/// have neither one tuple for each point nor one for each element. Both are warnings, because
/// programs read such files. But lookups by name find only the first result, and a viewer cannot
/// place other values.
void CheckResults(const ModelContent& model, ResultLinks& links, Findings& findings);

}  // namespace Qov::Tools
