#pragma once

#include <unordered_map>

#include "Qov/Export.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Finds the results of a loaded model whose values linked results share. A linked result stores
/// neither values nor their type.
class QOV_EXPORT ValueOwners {
 public:
  /// Visits each result once.
  explicit ValueOwners(const NodeTree& nodes);

  /// Returns true if the values of a result, linked or not, are unsigned 32-bit integers, false if
  /// they are floats.
  bool HoldUnsigned(const Geometry::VarStruct& variable) const;

 private:
  std::unordered_map<const DataLoader*, const Geometry::VarStruct*> mOwners;
};

}  // namespace QovRyx
