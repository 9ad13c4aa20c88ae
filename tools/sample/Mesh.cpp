#include "sample/Mesh.h"

#include <array>
#include <cmath>

namespace Qov::Tools {
namespace {

using QovRyx::Vector3;

/// Returns part / whole.
float Fraction(std::size_t part, std::size_t whole) {
  return static_cast<float>(part) / static_cast<float>(whole);
}

/// Connects columns times rows of points, stored row by row, to elements. In a closed mesh the
/// first column follows the last one.
void JoinGrid(Mesh& mesh, std::size_t first, std::size_t columns, std::size_t rows, bool closed) {
  const std::size_t numAcross = closed ? columns : columns - 1;
  for (std::size_t row = 0; row + 1 < rows; ++row) {
    for (std::size_t column = 0; column < numAcross; ++column) {
      const std::size_t next = (column + 1) % columns;
      for (const std::size_t corner : {row * columns + column, row * columns + next,
                                       (row + 1) * columns + next, (row + 1) * columns + column}) {
        mesh.mCorners.push_back(static_cast<std::uint32_t>(first + corner));
      }
    }
  }
}

Vector3 Plus(const Vector3& a, const Vector3& b, float factor) {
  return {a.mX + factor * b.mX, a.mY + factor * b.mY, a.mZ + factor * b.mZ};
}

/// Appends a parallelogram of n times n elements.
void AppendFace(Mesh& mesh, const Vector3& origin, const Vector3& a, const Vector3& b,
                std::size_t n) {
  const std::size_t first = mesh.mPoints.size();
  for (std::size_t row = 0; row <= n; ++row) {
    for (std::size_t column = 0; column <= n; ++column) {
      mesh.mPoints.push_back(Plus(Plus(origin, a, Fraction(column, n)), b, Fraction(row, n)));
    }
  }
  JoinGrid(mesh, first, n + 1, n + 1, false);
}

/// Returns points around the edge of a plate, with its corners.
std::vector<Vector3> MakeEdge(const HoledPlate& plate) {
  const float x = plate.mWidth / 2;
  const float y = plate.mHeight / 2;
  const std::array<Vector3, 5> corners{
      {{-x, -y, 0}, {x, -y, 0}, {x, y, 0}, {-x, y, 0}, {-x, -y, 0}}};
  std::vector<Vector3> edge;
  for (std::size_t side = 0; side < 4; ++side) {
    const std::size_t n = plate.mDivisions * (side % 2 == 0 ? 4 : 2);
    for (std::size_t i = 0; i < n; ++i) {
      const float t = Fraction(i, n);
      edge.push_back({corners[side].mX * (1 - t) + corners[side + 1].mX * t,
                      corners[side].mY * (1 - t) + corners[side + 1].mY * t, 0});
    }
  }
  return edge;
}

}  // namespace

Mesh MakeRectangle(float width, float height, std::size_t nx, std::size_t ny) {
  Mesh mesh;
  for (std::size_t row = 0; row <= ny; ++row) {
    for (std::size_t column = 0; column <= nx; ++column) {
      mesh.mPoints.push_back({width * Fraction(column, nx), height * Fraction(row, ny), 0});
    }
  }
  JoinGrid(mesh, 0, nx + 1, ny + 1, false);
  return mesh;
}

Mesh HoledPlate::MakeMesh() const {
  Mesh mesh;
  const std::vector<Vector3> edge = MakeEdge(*this);
  for (std::size_t ring = 0; ring <= mRings; ++ring) {
    const float s = Fraction(ring, mRings);
    const float t = s * (1 + s) / 2;  // the outermost elements are three times the innermost
    for (const Vector3& outer : edge) {
      const float toHole = mRadius / std::sqrt(outer.mX * outer.mX + outer.mY * outer.mY);
      const float factor = toHole * (1 - t) + t;
      mesh.mPoints.push_back({outer.mX * factor, outer.mY * factor, 0});
    }
  }
  JoinGrid(mesh, 0, edge.size(), mRings + 1, true);
  return mesh;
}

Mesh MakeBox(const Vector3& size, std::size_t n) {
  const Vector3 x{size.mX, 0, 0};
  const Vector3 y{0, size.mY, 0};
  const Vector3 z{0, 0, size.mZ};
  Mesh mesh;
  AppendFace(mesh, {}, y, x, n);
  AppendFace(mesh, z, x, y, n);
  AppendFace(mesh, {}, x, z, n);
  AppendFace(mesh, y, z, x, n);
  AppendFace(mesh, {}, z, y, n);
  AppendFace(mesh, x, y, z, n);
  return mesh;
}

}  // namespace Qov::Tools
