#pragma once

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// The result that a linked result of a loaded model names.
struct LinkTarget {
  LinkTarget(const QovRyx::NodeTree& nodes, const QovRyx::Geometry::VarStruct& linked);

  /// The geometry and the result at the place of the link; null if there is none.
  const QovRyx::Geometry* mGeometry = nullptr;
  const QovRyx::Geometry::VarStruct* mVariable = nullptr;
  /// True if that result has values, of its own or at the end of its chain of links.
  bool mHasValues = false;
};

}  // namespace Qov::Tools
