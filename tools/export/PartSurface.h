#pragma once

#include <string>
#include <vector>

#include "mesh/OuterSurface.h"

namespace Qov::Tools {

/// What happens to a surface.
enum class SurfaceUse {
  Written,  ///< To a format that has nothing but surfaces.
  Drawn,    ///< In a picture, in which points are visible, too.
};

/// Returns the outer surface of a geometry. Triangles and lines with a coordinate that is not
/// finite are removed. The notes count them, the cells that have no surface (if it is written), and
/// the polygons whose triangles may not cover them exactly. Raises the errors of FindOuterSurface.
QovMesh::Surface FindPartSurface(const QovMesh::Mesh& mesh, const std::string& name,
                                 std::vector<std::string>& notes,
                                 SurfaceUse use = SurfaceUse::Written);

}  // namespace Qov::Tools
