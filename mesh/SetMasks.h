#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace QovMesh {

/// Turns node sets into masks of the points of a mesh.
class SetMasks {
 public:
  /// `nodeIds` has an id for each point; it may be empty.
  explicit SetMasks(std::span<const std::uint32_t> nodeIds);

  /// Returns how many of the numbers are the id of a point.
  std::uint64_t CountKnown(std::span<const std::uint32_t> numbers) const;
  /// Returns 1 for each point whose id is among the numbers, else 0.
  std::vector<std::uint8_t> MakeMask(std::span<const std::uint32_t> numbers) const;

 private:
  struct Point {
    std::uint32_t mId;
    std::uint32_t mIndex;
  };
  static bool IsLess(const Point& a, const Point& b) { return a.mId < b.mId; }

  std::vector<Point> mPoints;  ///< By id.
};

}  // namespace QovMesh
