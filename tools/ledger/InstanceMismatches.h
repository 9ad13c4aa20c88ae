#pragma once

#include <cstdint>
#include <string>

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Nodes of a model that differ from those of another model.
struct Mismatches {
  std::uint64_t mCount = 0;
  std::string mFirst;  ///< Description of the first one; not escaped.
};

/// Finds nodes that are only in one of the models, and nodes whose names or types differ.
Mismatches FindNodeMismatches(const QovRyx::NodeTree& first, const QovRyx::NodeTree& other);

/// Finds geometries in both models whose numbers of points or of element corners differ.
Mismatches FindMeshMismatches(const QovRyx::NodeTree& first, const QovRyx::NodeTree& other);

}  // namespace Qov::Tools
