#pragma once

#include <cstddef>
#include <cstdint>

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Size of a model of solids, limited by memory only.
struct SolidsPlan {
  /// Cells along each edge of a part.
  std::size_t mSize = 20;
  /// Parts in a model, alternately of hexahedra and of tetrahedra (five per cell).
  std::size_t mNumParts = 2;
  /// Load cases, whose names are the instance parts of the results; 0 for names without one.
  std::size_t mNumCases = 0;

  /// Returns true if 32 bits are enough for the ids of all points and elements.
  bool HasIdsForAll() const;
};

/// Builds a row of vibrating blocks at that time step. Each has two vectors and two scalars per
/// point (and load case). As in measured or computed data the low bits of the values are noise,
/// which is the same in every run.
void BuildSolids(QovRyx::Tree& tree, const SolidsPlan& plan, std::uint32_t step);

}  // namespace Qov::Tools
