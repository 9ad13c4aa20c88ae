#pragma once

#include <cstdint>
#include <string>

#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Moves a shape from `source` to `nodes`, as Tree::AddShape describes. If `cutLinks` is false, the
/// caller has already cut all links between geometries of `source`, so that moving many shapes
/// takes one pass over its results.
void MoveShape(NodeTree& nodes, NodeTree& source, std::uint32_t shapeId,
               const std::string& groupName, bool cutLinks);

}  // namespace QovRyx
