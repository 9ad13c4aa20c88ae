#pragma once

#include <vector>

#include "Qov/Ryx/NodeSets.h"
#include "Qov/Ryx/NumericArray.h"
#include "Qov/Ryx/Tree.h"
#include "container/ReadAhead.h"

namespace QovRyx {

/// Adds the part of a file that holds the array, if it is in a file.
void AddPart(const NumericArray& array, QovJbf::ReadAhead::Parts& parts);

/// A part of a model that the heavy stream of its file stores.
struct HeavyItem {
  Geometry::VarStruct* mpResult;  ///< A result that is not linked; null for node sets.
  NodeSets* mpSets;               ///< Null for a result.
};

/// Returns the items of a model in the order in which its inputs store them, so that each block of
/// an input is decompressed once: items in memory first, then those of each file by offset. The
/// files are in the order of their first item in the tree. Returns the order of the tree if the
/// output, in blocks of `blockSize` bytes, would be slow to read in that order, as RyxMerge does
/// (docs/format.md, "Array order").
std::vector<HeavyItem> ListForSave(NodeTree& nodes, std::uint64_t blockSize);

/// Returns the parts that hold the items, to be read ahead. An array of more than `largestReadOnce`
/// bytes may be read twice.
///
/// The first block is left out if it is large and no array in it is read twice: nothing else can be
/// done while a worker decompresses it. Read piece by piece, it gives the other threads work at
/// once.
QovJbf::ReadAhead::Parts PlanReads(const std::vector<HeavyItem>& items,
                                   std::uint64_t largestReadOnce);

}  // namespace QovRyx
