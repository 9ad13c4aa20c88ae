#pragma once

#include <cstdint>

#include "Qov/Ryx/Extract.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

struct RenameCounts {
  std::uint64_t mNodes = 0;
  std::uint64_t mResults = 0;
};

/// Renames nodes and results as `request` asks, all at the same time, so that two names can be
/// exchanged. Raises the errors of Extract about names. After an error, some names may have
/// changed.
RenameCounts RenameContent(NodeTree& nodes, const ExtractRequest& request);

}  // namespace QovRyx
