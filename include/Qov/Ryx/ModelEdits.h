#pragma once

#include <cstdint>
#include <functional>
#include <set>

#include "Qov/Export.h"
#include "Qov/Ryx/Tree.h"

/// Changes of a model that keep the values of all results that stay. Node::SetName renames a node,
/// Geometry::RenameVariable a result.
namespace QovRyx {

/// Counts of the content that RemoveContent has removed or replaced.
struct RemovedContent {
  std::uint64_t mNodes = 0;
  std::uint64_t mResults = 0;        ///< Including those of removed geometries.
  std::uint64_t mLinksReplaced = 0;  ///< Results whose links led to removed results.
};

/// Returns true for a result that is removed. Called once for each result of the nodes that stay,
/// in ascending order of places.
using ResultPredicate = std::function<bool(const ResultPlace&, const Geometry::VarStruct&)>;

/// Removes nodes with everything below them, and results. All other nodes keep their ids.
///
/// Links follow their results to their new positions. A linked result whose chain of links ends at
/// a removed result takes the values of that result; further results with the same values are
/// linked to it, so that the values are stored once. A result has no values if it had none before,
/// because its chain is a cycle or ends at a dangling link.
///
/// Raises ElementNotFound for an id that the tree does not have, and InvalidMethod for the root.
/// Nothing has been changed then. Null for `isRemoved` removes nodes only.
QOV_EXPORT RemovedContent RemoveContent(NodeTree& nodes, const std::set<std::uint32_t>& ids,
                                        const ResultPredicate& isRemoved = nullptr);

}  // namespace QovRyx
