#pragma once

#include <cstdint>
#include <string>

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// The nodes of a model that differ from those of another one.
struct Misfits {
  std::uint64_t mCount = 0;
  std::string mFirst;  ///< Describes the first of them; not escaped.
};

/// Finds nodes that only one of the models has, or whose names or types differ.
Misfits FindOtherNodes(const QovRyx::NodeTree& first, const QovRyx::NodeTree& other);

/// Finds geometries of both models whose numbers of points or of element corners differ.
Misfits FindOtherMeshes(const QovRyx::NodeTree& first, const QovRyx::NodeTree& other);

}  // namespace Qov::Tools
