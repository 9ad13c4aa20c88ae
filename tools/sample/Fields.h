#pragma once

#include <vector>

#include "sample/Mesh.h"

/// Values at the points of a mesh, from closed solutions of plane elasticity and heat conduction.
/// Lengths in mm, stresses in MPa, temperatures in degrees Celsius, times in s.
namespace Qov::Tools {

/// Values of a whole mesh: one scalar or three components per point.
using Field = std::vector<float>;

/// Tension far away from the hole: `mFirst` in the direction (mCosine, mSine), `mSecond`
/// perpendicular to it.
struct Tension {
  double mFirst = 0.0;
  double mSecond = 0.0;
  double mCosine = 1.0;
  double mSine = 0.0;
};

/// Returns the displacements of an infinite steel plate with a hole of that radius around the
/// origin.
Field DisplacementAroundHole(const Mesh& mesh, double radius, const Tension& load);
/// Returns the equivalent stress of the same plate.
Field StressAroundHole(const Mesh& mesh, double radius, const Tension& load);

/// Returns the temperatures of a plate that has 20 degrees at time 0, when its edge at x = 0 is
/// heated to 200 degrees.
Field Temperature(const Mesh& mesh, double time);

}  // namespace Qov::Tools
