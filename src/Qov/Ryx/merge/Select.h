#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Qov/Ryx/Selection.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Counts of the content that a selection has left out.
struct SelectionCounts {
  std::uint64_t mNodesLeftOut = 0;
  std::uint64_t mResultsLeftOut = 0;  ///< Including those of geometries that are left out.
  std::uint64_t mLinksReplaced = 0;   ///< Results whose links led to results left out.
  std::vector<std::string> mNotes;    ///< A line for each word that fits nothing.
};

/// Removes everything that the selection does not choose. Links follow as in RemoveContent. Raises
/// ElementNotFound for a selection that fits nothing, before the tree is changed.
SelectionCounts ApplySelection(Tree& tree, const Selection& selection);

}  // namespace QovRyx
