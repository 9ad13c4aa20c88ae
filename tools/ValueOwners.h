#pragma once

#include <unordered_map>

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Whether the values of a variable that is not linked are unsigned integers, not floats.
bool HoldsIntegers(const QovRyx::Geometry::VarStruct& variable);

/// Which variables of a loaded model have the values that linked ones take.
class ValueOwners {
 public:
  /// Looks at each variable once.
  explicit ValueOwners(const QovRyx::NodeTree& nodes);

  /// Whether a variable's values are unsigned integers; a linked one goes by their owner.
  bool HoldIntegers(const QovRyx::Geometry::VarStruct& variable) const;

 private:
  std::unordered_map<const QovRyx::DataLoader*, const QovRyx::Geometry::VarStruct*> mOwners;
};

}  // namespace Qov::Tools
