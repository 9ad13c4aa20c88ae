#pragma once

#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Returns true for a model that a merge as datasets has written: its root is the group "Merge",
/// which has no data of its own.
bool IsDatasetMerge(const Tree& tree);

/// Moves everything below the root of `from` below the root of `into`, after its last child. The
/// ids of the nodes are raised like those of a model that Tree::Merge adds, but by one less,
/// because the root stays behind. Both models are dataset merges. Raises ModelError if there are
/// not enough ids; nothing has been moved then.
void JoinDatasets(Tree& from, Tree& into);

}  // namespace QovRyx
