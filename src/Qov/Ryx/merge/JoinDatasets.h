#pragma once

#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Returns true for a model that a merge as datasets has written: its root is the group "Merge",
/// which has no data of its own.
bool IsDatasetMerge(const Tree& tree);

/// Moves all nodes below the root of `from` below the root of `into`, after its last child. Both
/// models are dataset merges. The moved nodes get higher ids, as in Tree::Merge, but lower by one,
/// because the root of `from` is not moved. Raises ModelError if there are not enough ids, before
/// any node is moved.
void JoinDatasets(Tree& from, Tree& into);

}  // namespace QovRyx
