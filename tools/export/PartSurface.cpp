#include "export/PartSurface.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "Plural.h"
#include "Terminal.h"

namespace Qov::Tools {
namespace {

bool IsFinite(const QovMesh::Mesh& mesh, std::uint32_t point) {
  const float* p = mesh.mPoints.data() + std::size_t{3} * point;
  return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
}

/// Removes the shapes with a corner that is not finite; returns their number.
/// `pEdges` has one item for each shape, or is null.
std::uint64_t RemoveNotFinite(const QovMesh::Mesh& mesh, std::size_t numCorners,
                              std::vector<std::uint32_t>& points, std::vector<std::uint32_t>& cells,
                              std::vector<std::uint8_t>* pEdges) {
  std::size_t numKept = 0;
  const std::size_t numShapes = cells.size();
  for (std::size_t i = 0; i < numShapes; ++i) {
    const auto first = points.begin() + static_cast<std::ptrdiff_t>(i * numCorners);
    const auto last = first + static_cast<std::ptrdiff_t>(numCorners);
    if (!std::all_of(first, last, [&](std::uint32_t point) { return IsFinite(mesh, point); })) {
      continue;
    }
    std::copy(first, last, points.begin() + static_cast<std::ptrdiff_t>(numKept * numCorners));
    if (pEdges != nullptr) (*pEdges)[numKept] = (*pEdges)[i];
    cells[numKept++] = cells[i];
  }
  points.resize(numKept * numCorners);
  cells.resize(numKept);
  if (pEdges != nullptr) pEdges->resize(numKept);
  return numShapes - numKept;
}

std::uint64_t CountCellsWithoutSurface(const QovMesh::Mesh& mesh) {
  std::uint64_t count = 0;
  for (const QovMesh::CellRun& run : mesh.mRuns) {
    if (QovMesh::GetShape(run.mKind).mDimension == 0) count += run.mNumCells;
  }
  return count;
}

}  // namespace

QovMesh::Surface FindPartSurface(const QovMesh::Mesh& mesh, const std::string& name,
                                 std::vector<std::string>& notes, SurfaceUse use) {
  const auto note = [&](const std::string& text) {
    notes.push_back(fmt::format("geometry {}: {}", Escape(name, {}), text));
  };
  QovMesh::Surface surface = QovMesh::FindOuterSurface(mesh);
  const std::uint64_t numTriangles =
      RemoveNotFinite(mesh, 3, surface.mTriangles, surface.mTriangleCells, &surface.mTriangleEdges);
  const std::uint64_t numLines =
      RemoveNotFinite(mesh, 2, surface.mLines, surface.mLineCells, nullptr);
  if (numTriangles + numLines != 0) {
    note(fmt::format("not {}, because a coordinate is not finite: {}, {}",
                     use == SurfaceUse::Written ? "written" : "drawn",
                     Plural(numTriangles, "triangle"), Plural(numLines, "line")));
  }
  if (surface.mNumDoubtfulPolygons != 0) {
    note(fmt::format("the triangles of {} may not cover {} exactly",
                     Plural(surface.mNumDoubtfulPolygons, "polygon"),
                     surface.mNumDoubtfulPolygons == 1 ? "it" : "them"));
  }
  if (use == SurfaceUse::Drawn) return surface;
  const std::uint64_t numPoints = CountCellsWithoutSurface(mesh);
  if (numPoints != 0) {
    note(fmt::format("not written, because points have no surface: {}", Plural(numPoints, "cell")));
  }
  if (mesh.GetNumCells() == 0) note("it has no cells, so there is no surface to write");
  return surface;
}

}  // namespace Qov::Tools
