#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace QovMesh {

/// x, y, z of a place or a direction.
using Triple = std::array<double, 3>;

inline double Dot(const Triple& a, const Triple& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline Triple Subtract(const Triple& a, const Triple& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

inline Triple Cross(const Triple& a, const Triple& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// Returns point `i` of an array with three coordinates for each.
inline Triple PointOf(std::span<const float> points, std::uint32_t i) {
  const std::size_t first = std::size_t{3} * i;
  return {points[first], points[first + 1], points[first + 2]};
}

}  // namespace QovMesh
