#pragma once

#include <cstdint>
#include <string>

#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Does what Tree::AddShape does, from `source` to `nodes`. Without `cutLinks` the caller has cut
/// all links between geometries of `source`, so that many shapes take one pass over its results.
void MoveShape(NodeTree& nodes, NodeTree& source, std::uint32_t shapeId,
               const std::string& groupName, bool cutLinks);

}  // namespace QovRyx
