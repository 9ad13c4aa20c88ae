#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Qov/Jbf/ValueTypes.h"

namespace Qov::Tools {

/// Elements of one kind over points: quadrilaterals unless something else is said.
struct Mesh {
  std::vector<QovRyx::Vector3> mPoints;
  /// Positions of points, mNumCorners an element.
  std::vector<std::uint32_t> mCorners;
  std::uint32_t mNumCorners = 4;
  /// The ids of points and elements count up from these.
  std::uint32_t mFirstNodeId = 1;
  std::uint32_t mFirstElementId = 1;

  std::size_t GetNumElements() const { return mCorners.size() / mNumCorners; }
};

/// What a point's place decides.
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

/// A rectangle from the origin, in the plane of x and y, of nx times ny elements.
Mesh MakeRectangle(float width, float height, std::size_t nx, std::size_t ny);

/// A rectangle around the origin with a round hole in its middle. Rings of elements lead from the
/// hole to the edge and grow on the way.
struct HoledPlate {
  float mWidth = 160.0F;
  float mHeight = 80.0F;
  float mRadius = 12.0F;
  std::size_t mRings = 25;
  /// Elements along half the height; twice as many lie along half the width.
  std::size_t mDivisions = 4;

  Mesh MakeMesh() const;
};

/// The six faces of a box from the origin, each of n times n elements; faces share no points.
Mesh MakeBox(const QovRyx::Vector3& size, std::size_t n);

/// The side of an upright cylinder that stands on the origin.
Mesh MakeTube(float radius, float height, std::size_t sectors, std::size_t layers);

void Move(Mesh& mesh, const QovRyx::Vector3& by);

}  // namespace Qov::Tools
