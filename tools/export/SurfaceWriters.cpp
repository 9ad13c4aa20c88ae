#include "export/SurfaceWriters.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "Plural.h"
#include "Qov/Util/Raise.h"
#include "Terminal.h"
#include "export/LeftOut.h"
#include "export/PartSurface.h"
#include "export/SpilledBytes.h"

namespace Qov::Tools {
namespace {

using Vector = std::array<float, 3>;

Vector PointOf(const QovMesh::Mesh& mesh, std::uint32_t point) {
  const std::size_t i = std::size_t{3} * point;
  return {mesh.mPoints[i], mesh.mPoints[i + 1], mesh.mPoints[i + 2]};
}

/// Returns the unit normal of a triangle; zeros if it has no area.
Vector NormalOf(const std::array<Vector, 3>& p) {
  std::array<double, 3> u{};
  std::array<double, 3> v{};
  for (std::size_t k = 0; k < 3; ++k) {
    u[k] = static_cast<double>(p[1][k]) - p[0][k];
    v[k] = static_cast<double>(p[2][k]) - p[0][k];
  }
  const double x = u[1] * v[2] - u[2] * v[1];
  const double y = u[2] * v[0] - u[0] * v[2];
  const double z = u[0] * v[1] - u[1] * v[0];
  const double length = std::hypot(x, y, z);
  if (!(length > 0) || !std::isfinite(length)) return {};
  return {static_cast<float>(x / length), static_cast<float>(y / length),
          static_cast<float>(z / length)};
}

void NoteLines(const ExportTask& task, const ExportPart& part, const QovMesh::Surface& surface) {
  if (surface.mLines.empty()) return;
  task.mNotes.push_back(fmt::format("geometry {}: not written: {}", Escape(part.mName, {}),
                                    Plural(surface.mLines.size() / 2, "line")));
}

void NoteLeftOut(const ExportTask& task) {
  NoteResultsLeftOut(task, [](const ExportResult&) { return false; });
  NoteSetsLeftOut(task);
}

/// Returns a line of the header that has the name of a part. Readers limit the length of lines.
std::string PartComment(std::uint32_t number, const std::string& name) {
  constexpr std::size_t kMost = 200;
  return fmt::format("comment part {}: {}\n", number, Escape(name, {}).substr(0, kMost));
}

void CheckCount(std::uint64_t count, std::uint64_t most, const char* what) {
  if (count <= most) return;
  Util::Raise("tools/export/SurfaceWriters", Util::Exception::ErrorType::OutOfBounds,
              fmt::format("the surface has more than {} {}", most, what));
}

/// Numbers the points that a surface uses, in the order of the mesh.
std::vector<std::uint32_t> NumberUsedPoints(const QovMesh::Mesh& mesh,
                                            const QovMesh::Surface& surface, std::uint32_t& next) {
  constexpr std::uint32_t kUnused = std::numeric_limits<std::uint32_t>::max();
  std::vector<std::uint32_t> numbers(mesh.GetNumPoints(), kUnused);
  for (const std::uint32_t point : surface.mTriangles) numbers[point] = 0;
  for (std::uint32_t& number : numbers) {
    if (number != kUnused) number = next++;
  }
  return numbers;
}

}  // namespace

void WriteStl(const ExportTask& task, const std::string& path, OutputSet& outputs) {
  constexpr std::size_t kTitleSize = 80;
  SafeOutput& output = outputs.Open(path);
  std::string title = "binary STL, written by ryx export";
  title.resize(kTitleSize + sizeof(std::uint32_t));
  output.Write(title);
  MeshCache meshes(task.mKinds);
  std::uint64_t numTriangles = 0;
  for (const ExportPart& part : task.mContent.mParts) {
    const QovMesh::Mesh& mesh = meshes.Get(part);
    const QovMesh::Surface surface = FindPartSurface(mesh, part.mName, task.mNotes);
    NoteLines(task, part, surface);
    for (std::size_t i = 0; i < surface.mTriangles.size(); i += 3) {
      const std::array<Vector, 3> points = {PointOf(mesh, surface.mTriangles[i]),
                                            PointOf(mesh, surface.mTriangles[i + 1]),
                                            PointOf(mesh, surface.mTriangles[i + 2])};
      const Vector normal = NormalOf(points);
      std::array<char, 50> record{};
      std::memcpy(record.data(), normal.data(), sizeof normal);
      std::memcpy(record.data() + sizeof normal, points.data(), sizeof points);
      output.Write(record.data(), record.size());
    }
    numTriangles += surface.mTriangleCells.size();
  }
  CheckCount(numTriangles, std::numeric_limits<std::uint32_t>::max(), "triangles");
  const auto count = static_cast<std::uint32_t>(numTriangles);
  output.Patch(kTitleSize, {reinterpret_cast<const char*>(&count), sizeof count});
  NoteLeftOut(task);
}

void WritePly(const ExportTask& task, const std::string& path, OutputSet& outputs) {
  SafeOutput& output = outputs.Open(path);
  SpilledBytes points(output);
  SpilledBytes faces(output);
  std::string names;
  MeshCache meshes(task.mKinds);
  std::uint32_t numPoints = 0;
  std::uint64_t numFaces = 0;
  std::uint32_t partNumber = 0;
  for (const ExportPart& part : task.mContent.mParts) {
    const QovMesh::Mesh& mesh = meshes.Get(part);
    CheckCount(numPoints + mesh.GetNumPoints(), std::numeric_limits<std::int32_t>::max(), "points");
    const QovMesh::Surface surface = FindPartSurface(mesh, part.mName, task.mNotes);
    NoteLines(task, part, surface);
    const std::uint32_t before = numPoints;
    const auto numbers = NumberUsedPoints(mesh, surface, numPoints);
    std::uint32_t next = before;
    for (std::uint32_t i = 0; i < numbers.size(); ++i) {
      if (numbers[i] != next) continue;
      const Vector point = PointOf(mesh, i);
      points.Append(point.data(), sizeof point);
      points.Append(&partNumber, sizeof partNumber);
      ++next;
    }
    for (std::size_t i = 0; i < surface.mTriangles.size(); i += 3) {
      std::array<char, 13> record{3};
      for (std::size_t j = 0; j < 3; ++j) {
        std::memcpy(&record[1 + 4 * j], &numbers[surface.mTriangles[i + j]], 4);
      }
      faces.Append(record.data(), record.size());
    }
    numFaces += surface.mTriangleCells.size();
    names += PartComment(partNumber++, part.mName);
  }
  output.Write(fmt::format(
      "ply\nformat binary_little_endian 1.0\ncomment written by ryx export\n{}"
      "element vertex {}\nproperty float x\nproperty float y\nproperty float z\nproperty int part\n"
      "element face {}\nproperty list uchar int vertex_indices\nend_header\n",
      names, numPoints, numFaces));
  points.CopyTo(output);
  faces.CopyTo(output);
  NoteLeftOut(task);
}

}  // namespace Qov::Tools
