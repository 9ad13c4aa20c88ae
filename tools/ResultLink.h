#pragma once

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Where the link of a linked result leads.
struct ResultLink {
  ResultLink(const QovRyx::NodeTree& nodes, const QovRyx::Geometry::VarStruct& variable);

  /// The geometry and the result that the link names; null if there is none.
  const QovRyx::Geometry* mGeometry = nullptr;
  const QovRyx::Geometry::VarStruct* mVariable = nullptr;
  /// Whether values are found there, or further on if that result is linked too.
  bool mFound = false;
};

}  // namespace Qov::Tools
