#pragma once

#include <cstdint>
#include <vector>

#include "html/PageBuffers.h"
#include "mesh/Mesh.h"
#include "mesh/OuterSurface.h"

namespace Qov::Tools {

/// The outer surface of a mesh with the points and cells that it uses, in the order of their first
/// use: by triangles, then by lines. The numbers of triangles and lines are positions in these.
struct PageMesh {
  PageMesh(const QovMesh::Mesh& mesh, const QovMesh::Surface& surface);

  std::vector<std::uint32_t> mPoints;  ///< Positions in the file, like the next one.
  std::vector<std::uint32_t> mCells;
  std::vector<std::uint32_t> mTriangles;  ///< Three points for each triangle.
  std::vector<std::uint32_t> mTriangleCells;
  std::vector<std::uint32_t> mLines;  ///< Two points for each line.
  std::vector<std::uint32_t> mLineCells;
};

/// Returns the surface for the manifest. Coordinates are quantised to 16 bits of its box.
PageItem MakeMeshItem(const QovMesh::Mesh& mesh, const PageMesh& surface);

}  // namespace Qov::Tools
