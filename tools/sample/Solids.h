#pragma once

#include <cstddef>
#include <cstdint>

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// How big a model of solids is. Every size makes a model; only memory bounds it.
struct SolidsPlan {
  /// Cells along each edge of a part.
  std::size_t mSize = 20;
  /// Parts in a model: in turn of hexahedra and of tetrahedra, five a cell.
  std::size_t mNumParts = 2;
  /// Load cases, whose names are the instance parts of the results; 0 for results without any.
  std::size_t mNumCases = 0;

  /// Elements and points have ids of 32 bits.
  bool HasIdsForAll() const;
};

/// A row of vibrating blocks at that step of time. Each has two vectors and two scalars a point
/// (and load case); as in measured or computed data the low bits of the values are noise, the
/// same in every run.
void BuildSolids(QovRyx::Tree& tree, const SolidsPlan& plan, std::uint32_t step);

}  // namespace Qov::Tools
