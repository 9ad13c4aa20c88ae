#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "mesh/Mesh.h"

namespace Qov::Test {

/// Returns a mesh of n x n x n hexahedra with sides of length 1.
inline QovMesh::Mesh MakeCubes(std::uint32_t n) {
  QovMesh::Mesh mesh;
  const std::uint32_t side = n + 1;
  for (std::uint32_t z = 0; z < side; ++z) {
    for (std::uint32_t y = 0; y < side; ++y) {
      for (std::uint32_t x = 0; x < side; ++x) {
        for (const std::uint32_t c : {x, y, z}) mesh.mPoints.push_back(static_cast<float>(c));
      }
    }
  }
  for (std::uint32_t z = 0; z < n; ++z) {
    for (std::uint32_t y = 0; y < n; ++y) {
      for (std::uint32_t x = 0; x < n; ++x) {
        const std::uint32_t a = (z * side + y) * side + x;
        const std::uint32_t up = side * side;
        mesh.mNodes.insert(mesh.mNodes.end(), {a, a + 1, a + 1 + side, a + side, a + up, a + up + 1,
                                               a + up + 1 + side, a + up + side});
      }
    }
  }
  mesh.mRuns = {{0, std::uint64_t{n} * n * n, 0, 8, QovMesh::CellKind::Hexahedron}};
  return mesh;
}

}  // namespace Qov::Test
