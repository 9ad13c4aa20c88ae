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

/// Content of nodes that a merge as instances takes from the first model only.
struct ContentMismatches {
  Mismatches mGroups;  ///< Groups with other attributes or another placement.
  Mismatches mShapes;  ///< Shapes with another material.
  Mismatches mSets;    ///< Nodes with other sets.
};

/// Compares the content of the nodes that both models have, with an equal type. Reads the node sets
/// if both have equally many; sets that cannot be read count as different. With `ignoreTimes`, the
/// times of groups may differ.
ContentMismatches FindContentMismatches(const QovRyx::NodeTree& first,
                                        const QovRyx::NodeTree& other, bool ignoreTimes);

}  // namespace Qov::Tools
