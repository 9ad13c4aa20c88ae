#pragma once

#include "Qov/Ryx/Merge.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Makes Save store equal arrays once. Called after the last change of the tree, before Save.
///
/// Two arrays are equal if they have the same width, the same bytes and the same type of values.
/// The first of them in the order of Save becomes the owner, the others become links to it.
/// Attributes, names and kinds stay as they are. Reads all arrays of which another one has the same
/// length. Raises their errors, for example DamagedBlock; the tree is unchanged then.
SharedArrays ShareEqualArrays(Tree& tree);

}  // namespace QovRyx
