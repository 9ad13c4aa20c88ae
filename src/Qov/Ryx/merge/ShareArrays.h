#pragma once

#include "EqualArrays.h"
#include "Qov/Ryx/Merge.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Makes Save store equal arrays once. Called after the last change of the tree, before Save.
///
/// The first of equal arrays, in the order of Save, is the owner. A result with an equal array
/// becomes a link to it, if the type of the values, the high byte of the kind and the fields that a
/// linked result does not store are equal too. Otherwise it keeps its own entry and gets the bytes
/// of an equal array, so that Save stores them once for up to kMostShares results. That is not
/// possible if all equal arrays are in memory or in files of the older layouts.
///
/// With `keepsBlocks`, arrays stay in the blocks that Save copies if BlockCopying::IfWholeNeeded
/// applies, so that it can copy them. Blocks of which less than half would be stored are given up:
/// their arrays are shared, and Save compresses the rest.
///
/// Names, kinds, flags and attributes stay as they are. Links to a result that becomes a link lead
/// directly to the owner. Raises the errors of FindEqualArrays before the tree is changed.
SharedArrays ShareEqualArrays(Tree& tree, const SearchLimits& limits = {},
                              bool keepsBlocks = false);

}  // namespace QovRyx
