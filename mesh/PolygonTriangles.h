#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace QovMesh {

/// Polygons with more corners are cut into a fan, because cutting ears takes quadratic time.
inline constexpr std::size_t kMostEarCorners = 1024;

/// Cuts a polygon into triangles by cutting ears in the plane of its mean normal, so that concave
/// polygons keep their shape. Appends three of its nodes for each triangle, in the order of the
/// polygon. `points` has three coordinates for each node.
///
/// Returns false if the triangles may not cover the polygon exactly: its outline crosses itself, it
/// has no area, a coordinate is not finite, or it has more than kMostEarCorners corners. Then the
/// rest of it is cut into a fan.
bool TriangulatePolygon(std::span<const std::uint32_t> nodes, std::span<const float> points,
                        std::vector<std::uint32_t>& triangles);

/// Returns true if the diagonal from nodes[0] to nodes[2] is inside the quad, false if it has to be
/// cut from nodes[1] to nodes[3].
bool IsFirstDiagonalInside(std::span<const std::uint32_t, 4> nodes, std::span<const float> points);

}  // namespace QovMesh
