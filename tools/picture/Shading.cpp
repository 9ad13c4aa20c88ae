#include "picture/Shading.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "mesh/Vectors.h"

namespace Qov::Tools {
namespace {

using QovMesh::Cross;
using QovMesh::Dot;
using QovMesh::PointOf;
using QovMesh::Subtract;

Triple Scale(const Triple& a, double factor) {
  return {a[0] * factor, a[1] * factor, a[2] * factor};
}

/// Returns the direction with length 1, or 0 if the length is 0 or not finite.
Triple Normalise(const Triple& v) {
  const double length = std::sqrt(Dot(v, v));
  return length > 0 && std::isfinite(length) ? Scale(v, 1 / length) : Triple{};
}

}  // namespace

float Brightness(const Triple& normal, const Triple& toViewer) {
  // The light is above the left shoulder of the viewer, so that the three visible faces of a cube
  // differ.
  constexpr double kLightRight = -0.25;
  constexpr double kLightUp = 0.45;
  constexpr double kAmbient = 0.5;
  const Triple n = Normalise(normal);
  const Triple v = Normalise(toViewer);
  const double facing = Dot(n, v);
  const double side = facing < 0 ? -1 : 1;  // both sides are alike
  const double light = side * (facing + kLightRight * n[0] + kLightUp * n[1]);
  return static_cast<float>(kAmbient + (1 - kAmbient) * std::clamp(light, 0.0, 1.0));
}

Triple NormalOf(const Triple& a, const Triple& b, const Triple& c) {
  return Cross(Subtract(b, a), Subtract(c, a));
}

SmoothNormals::SmoothNormals(std::span<const float> points,
                             std::span<const std::uint32_t> triangles, const Camera& camera)
    : mNormals(points.size()) {
  const auto point = [&](std::uint32_t i) { return PointOf(points, i); };
  const std::size_t numPoints = points.size() / 3;
  for (std::size_t i = 0; i + 2 < triangles.size(); i += 3) {
    const std::uint32_t* t = triangles.data() + i;
    if (t[0] >= numPoints || t[1] >= numPoints || t[2] >= numPoints) continue;
    const Triple normal = NormalOf(point(t[0]), point(t[1]), point(t[2]));
    const Triple unit = Normalise(camera.Turn(normal));
    for (std::size_t j = 0; j < 3; ++j) Add(t[j], unit);
  }
}

void SmoothNormals::Add(std::uint32_t point, const Triple& unit) {
  const auto sum = std::span(mNormals).subspan(std::size_t{3} * point, 3);
  // The triangles of shells may be ordered either way round.
  const double side = Dot({sum[0], sum[1], sum[2]}, unit) < 0 ? -1 : 1;
  for (std::size_t k = 0; k < 3; ++k) sum[k] += static_cast<float>(side * unit[k]);
}

Triple SmoothNormals::At(std::uint32_t point, const Triple& normal) const {
  constexpr double kCosineOfSharp = 0.866;
  const auto sum = std::span(mNormals).subspan(std::size_t{3} * point, 3);
  const Triple mean = Normalise({sum[0], sum[1], sum[2]});
  return std::abs(Dot(mean, Normalise(normal))) < kCosineOfSharp ? normal : mean;
}

}  // namespace Qov::Tools
