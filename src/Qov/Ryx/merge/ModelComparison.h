#pragma once

#include <string>

#include "MergeNotes.h"
#include "Qov/Ryx/Tree.h"

/// Comparisons of a further model with the first model of a merge.
namespace QovRyx {

/// Returns why the models do not have the same tree and the same meshes, or an empty string. Trees
/// are compared by ids, parents, names and types. Meshes are compared by the kinds, sizes and
/// widths of their arrays; equal arrays of several instances count once. No array is read.
std::string FindDifference(const Tree& first, const Tree& other);

/// Raises MismatchError for a geometry that the first model does not have and whose results
/// therefore have no place. Counts the nodes and the data of nodes that a merge as instances leaves
/// out.
void CountLeftOut(const Tree& first, const Tree& other, MergeNotes& notes);

}  // namespace QovRyx
