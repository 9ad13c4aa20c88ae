#pragma once

#include <string>
#include <vector>

#include "mesh/OuterSurface.h"

namespace Qov::Tools {

/// Returns the outer surface of a geometry for formats that have nothing but surfaces. Triangles
/// and lines with a coordinate that is not finite are removed. The notes count them, the cells
/// that have no surface, and the polygons whose triangles may not cover them exactly. Raises the
/// errors of FindOuterSurface.
QovMesh::Surface FindPartSurface(const QovMesh::Mesh& mesh, const std::string& name,
                                 std::vector<std::string>& notes);

}  // namespace Qov::Tools
