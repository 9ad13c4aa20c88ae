#pragma once

#include <vector>

#include "sample/Mesh.h"

/// Values at the points of a mesh, from closed solutions of plane elasticity and heat conduction.
/// Lengths in mm, stresses in MPa, temperatures in degrees Celsius, times in s.
namespace Qov::Tools {

/// Values of a whole mesh: a scalar a point, or three components a point.
using Field = std::vector<float>;

/// Tension far away from the hole: `mFirst` in the direction (mCosine, mSine), `mSecond` across.
struct Tension {
  double mFirst = 0.0;
  double mSecond = 0.0;
  double mCosine = 1.0;
  double mSine = 0.0;
};

/// The displacements of an infinite steel plate with a hole of that radius around the origin.
Field DisplacementAroundHole(const Mesh& mesh, double radius, const Tension& load);
/// Its equivalent stress.
Field StressAroundHole(const Mesh& mesh, double radius, const Tension& load);

/// A plate that is 20 degrees warm when its edge at x = 0 is brought to 200.
Field Temperature(const Mesh& mesh, double time);
/// Its thermal expansion; the corner at the origin stays where it is.
Field ThermalDisplacement(const Mesh& mesh, double time);

}  // namespace Qov::Tools
