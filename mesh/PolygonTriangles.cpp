#include "mesh/PolygonTriangles.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "mesh/Vectors.h"

namespace QovMesh {
namespace {

/// A corner of a polygon in its plane.
struct PlanePoint {
  double mX = 0;
  double mY = 0;
};

/// Returns twice the area of a triangle, positive if it is counterclockwise.
double Area(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c) {
  return (b.mX - a.mX) * (c.mY - a.mY) - (b.mY - a.mY) * (c.mX - a.mX);
}

/// Returns the corners, counterclockwise in the plane that is perpendicular to their mean normal;
/// nothing if they have no area or are not finite.
std::vector<PlanePoint> Project(std::span<const std::uint32_t> nodes,
                                std::span<const float> points) {
  const Triple origin = PointOf(points, nodes[0]);
  Triple normal{};
  for (std::size_t i = 1; i + 1 < nodes.size(); ++i) {
    const Triple area = Cross(Subtract(PointOf(points, nodes[i]), origin),
                              Subtract(PointOf(points, nodes[i + 1]), origin));
    for (std::size_t k = 0; k < 3; ++k) normal[k] += area[k];
  }
  const double length = std::sqrt(Dot(normal, normal));
  if (!(length > 0) || !std::isfinite(length)) return {};
  for (double& component : normal) component /= length;
  const Triple helper = std::abs(normal[0]) < 0.5 ? Triple{1, 0, 0} : Triple{0, 1, 0};
  const Triple x = Cross(helper, normal);
  const Triple y = Cross(normal, x);
  std::vector<PlanePoint> corners;
  for (const std::uint32_t node : nodes) {
    const Triple offset = Subtract(PointOf(points, node), origin);
    corners.push_back({Dot(offset, x), Dot(offset, y)});
  }
  return corners;
}

/// The corners of a polygon that are left while ears are cut off.
class EarCutter {
 public:
  EarCutter(std::span<const std::uint32_t> nodes, std::vector<PlanePoint> corners)
      : mNodes(nodes), mCorners(std::move(corners)) {
    double extent = 0;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      mLeft.push_back(i);
      extent = std::max({extent, std::abs(mCorners[i].mX), std::abs(mCorners[i].mY)});
    }
    mTolerance = kStraightness * extent * extent;
  }

  bool Cut(std::vector<std::uint32_t>& triangles) {
    std::size_t at = 0;
    std::size_t numTried = 0;  // since the last ear
    bool takesStraight = false;
    while (mLeft.size() > 3) {
      at %= mLeft.size();
      if (IsEar(at, takesStraight)) {
        Append(Before(at), mLeft[at], After(at), triangles);
        mLeft.erase(mLeft.begin() + static_cast<std::ptrdiff_t>(at));
        numTried = 0;
        takesStraight = false;
      } else if (numTried < mLeft.size()) {
        ++at;
        ++numTried;
      } else if (!takesStraight) {
        takesStraight = true;
        numTried = 0;
      } else {
        break;
      }
    }
    const bool isExact = mLeft.size() == 3 && AreaAt(1) >= -mTolerance;
    for (std::size_t i = 1; i + 1 < mLeft.size(); ++i) {
      Append(mLeft[0], mLeft[i], mLeft[i + 1], triangles);
    }
    return isExact;
  }

 private:
  /// Corners are straight if twice the area of their triangle is below this share of the square of
  /// the polygon's extent: coordinates have 24 significant bits.
  static constexpr double kStraightness = 1e-6;

  std::size_t Before(std::size_t at) const { return mLeft[(at + mLeft.size() - 1) % mLeft.size()]; }
  std::size_t After(std::size_t at) const { return mLeft[(at + 1) % mLeft.size()]; }
  double AreaAt(std::size_t at) const {
    return Area(mCorners[Before(at)], mCorners[mLeft[at]], mCorners[After(at)]);
  }

  /// Returns true if the corner is convex, or straight if that is enough, and its triangle holds no
  /// other corner.
  bool IsEar(std::size_t at, bool takesStraight) const {
    const double least = takesStraight ? -mTolerance : mTolerance;
    if (AreaAt(at) <= least) return false;
    const PlanePoint& a = mCorners[Before(at)];
    const PlanePoint& b = mCorners[mLeft[at]];
    const PlanePoint& c = mCorners[After(at)];
    const double margin = takesStraight ? mTolerance : 0;
    for (std::size_t i = 0; i < mLeft.size(); ++i) {
      const std::size_t other = mLeft[i];
      if (other == Before(at) || other == mLeft[at] || other == After(at)) continue;
      if (AreaAt(i) > mTolerance) continue;  // a convex corner is never the only one inside
      const PlanePoint& p = mCorners[other];
      if (Area(a, b, p) > margin && Area(b, c, p) > margin && Area(c, a, p) >= margin) return false;
    }
    return true;
  }

  void Append(std::size_t a, std::size_t b, std::size_t c,
              std::vector<std::uint32_t>& triangles) const {
    triangles.insert(triangles.end(), {mNodes[a], mNodes[b], mNodes[c]});
  }

  std::span<const std::uint32_t> mNodes;
  std::vector<PlanePoint> mCorners;
  std::vector<std::size_t> mLeft;  ///< Positions in mNodes.
  double mTolerance = 0;           ///< For twice the area of a triangle.
};

void AppendFan(std::span<const std::uint32_t> nodes, std::vector<std::uint32_t>& triangles) {
  for (std::size_t i = 1; i + 1 < nodes.size(); ++i) {
    triangles.insert(triangles.end(), {nodes[0], nodes[i], nodes[i + 1]});
  }
}

}  // namespace

bool TriangulatePolygon(std::span<const std::uint32_t> nodes, std::span<const float> points,
                        std::vector<std::uint32_t>& triangles) {
  if (nodes.size() < 3) return false;
  std::vector<PlanePoint> corners;
  if (nodes.size() <= kMostEarCorners) corners = Project(nodes, points);
  if (corners.empty()) {
    AppendFan(nodes, triangles);
    return false;
  }
  return EarCutter(nodes, std::move(corners)).Cut(triangles);
}

bool IsFirstDiagonalInside(std::span<const std::uint32_t, 4> nodes, std::span<const float> points) {
  const Triple a = PointOf(points, nodes[0]);
  const Triple diagonal = Subtract(PointOf(points, nodes[2]), a);
  const Triple first = Cross(Subtract(PointOf(points, nodes[1]), a), diagonal);
  const Triple second = Cross(diagonal, Subtract(PointOf(points, nodes[3]), a));
  return !(Dot(first, second) < 0);
}

}  // namespace QovMesh
