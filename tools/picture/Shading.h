#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "picture/Camera.h"

namespace Qov::Tools {

/// Returns the brightness, 0 to 1, of a surface with this normal; both in view coordinates.
/// `toViewer` is the direction to the viewer. Surfaces that face the viewer have brightness 1, so
/// that their colours are those of the scalar bar.
float Brightness(const Triple& normal, const Triple& toViewer);

/// Returns a normal of the triangle, its length twice the area; 0 if a number overflows.
Triple NormalOf(const Triple& a, const Triple& b, const Triple& c);

/// The mean normals of the triangles around each point, in view coordinates.
class SmoothNormals {
 public:
  SmoothNormals(std::span<const float> points, std::span<const std::uint32_t> triangles,
                const Camera& camera);

  /// Returns the normal at a corner of a triangle: the mean one, unless it differs by more than 30
  /// degrees from the triangle's own `normal`. Then the point is on a sharp edge.
  Triple At(std::uint32_t point, const Triple& normal) const;

 private:
  void Add(std::uint32_t point, const Triple& unit);

  std::vector<float> mNormals;  ///< x, y, z for each point.
};

}  // namespace Qov::Tools
