#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Qov/Jbf/ValueTypes.h"

namespace Qov::Tools {

/// Points and elements of one type, quadrilaterals by default.
struct Mesh {
  std::vector<QovRyx::Vector3> mPoints;
  /// Positions of points, mNumCorners per element.
  std::vector<std::uint32_t> mCorners;
  std::uint32_t mNumCorners = 4;
  /// The ids of points and elements count up from these.
  std::uint32_t mFirstNodeId = 1;
  std::uint32_t mFirstElementId = 1;

  std::size_t GetNumElements() const { return mCorners.size() / mNumCorners; }
};

/// Returns the ids of the points at which `predicate` is true.
template <class Predicate>
std::vector<std::uint32_t> NodeIdsWhere(const Mesh& mesh, Predicate predicate) {
  std::vector<std::uint32_t> ids;
  for (std::size_t i = 0; i < mesh.mPoints.size(); ++i) {
    if (predicate(mesh.mPoints[i])) {
      ids.push_back(mesh.mFirstNodeId + static_cast<std::uint32_t>(i));
    }
  }
  return ids;
}

/// Returns a rectangle in the xy plane, from the origin, of nx times ny elements.
Mesh MakeRectangle(float width, float height, std::size_t nx, std::size_t ny);

/// A rectangle around the origin with a round hole in its middle. Rings of elements lie between
/// the hole and the edge; outer rings are wider.
struct HoledPlate {
  float mWidth = 160.0F;
  float mHeight = 80.0F;
  float mRadius = 12.0F;
  std::size_t mRings = 25;
  /// Elements along half the height; half the width has twice as many.
  std::size_t mDivisions = 4;

  Mesh MakeMesh() const;
};

/// Returns the six faces of a box from the origin, each of n times n elements. Faces share no
/// points.
Mesh MakeBox(const QovRyx::Vector3& size, std::size_t n);

}  // namespace Qov::Tools
