#include "picture/Camera.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "mesh/Vectors.h"

namespace Qov::Tools {
namespace {

using QovMesh::Cross;
using QovMesh::Dot;
using QovMesh::Subtract;

constexpr double kMargin = 0.04;  // of the viewport, at each side

/// Returns the direction with length 1, or 0 if it has none.
Triple Normalise(Triple v) {
  const double greatest = std::max({std::abs(v[0]), std::abs(v[1]), std::abs(v[2])});
  if (!(greatest > 0) || !std::isfinite(v[0] + v[1] + v[2])) return {};
  for (double& c : v) c /= greatest;
  const double length = std::sqrt(Dot(v, v));
  for (double& c : v) c /= length;
  return v;
}

struct ViewDirections {
  std::string_view mName;
  Triple mDirection;
  Triple mUp;
};

/// In the order of StandardView.
constexpr std::array<ViewDirections, 7> kStandardViews = {{
    {"front", {0, 1, 0}, {0, 0, 1}},
    {"back", {0, -1, 0}, {0, 0, 1}},
    {"left", {1, 0, 0}, {0, 0, 1}},
    {"right", {-1, 0, 0}, {0, 0, 1}},
    {"top", {0, 0, -1}, {0, 1, 0}},
    {"bottom", {0, 0, 1}, {0, -1, 0}},
    {"iso", {-1, 1, -1}, {0, 0, 1}},
}};

/// Calls `visit` with each corner of the box.
template <class Visitor>
void ForEachCorner(const Box& box, Visitor visit) {
  const Triple low = box.GetLow();
  const Triple high = box.GetHigh();
  for (unsigned i = 0; i < 8; ++i) {
    visit(Triple{(i & 1) != 0 ? high[0] : low[0], (i & 2) != 0 ? high[1] : low[1],
                 (i & 4) != 0 ? high[2] : low[2]});
  }
}

}  // namespace

void Box::Include(const Triple& point) {
  if (!std::isfinite(point[0]) || !std::isfinite(point[1]) || !std::isfinite(point[2])) return;
  const bool isFirst = IsEmpty();
  for (std::size_t k = 0; k < 3; ++k) {
    mLow[k] = isFirst ? point[k] : std::min(mLow[k], point[k]);
    mHigh[k] = isFirst ? point[k] : std::max(mHigh[k], point[k]);
  }
}

void Box::Include(const Box& box) {
  if (box.IsEmpty()) return;
  Include(box.mLow);
  Include(box.mHigh);
}

void Box::IncludeAll(std::span<const float> points) {
  for (std::size_t i = 0; i + 2 < points.size(); i += 3) {
    Include(Triple{points[i], points[i + 1], points[i + 2]});
  }
}

Triple Box::GetCentre() const {
  if (IsEmpty()) return {};
  Triple centre;
  for (std::size_t k = 0; k < 3; ++k) centre[k] = mLow[k] / 2 + mHigh[k] / 2;
  return centre;
}

double Box::GetRadius() const {
  if (IsEmpty()) return 0;
  const Triple size = Subtract(mHigh, mLow);
  return std::hypot(size[0], size[1], size[2]) / 2;
}

std::optional<StandardView> FindStandardView(std::string_view name) {
  for (std::size_t i = 0; i < kStandardViews.size(); ++i) {
    if (kStandardViews[i].mName == name) return static_cast<StandardView>(i);
  }
  return std::nullopt;
}

Camera::Camera(StandardView view)
    : Camera(FromDirections(kStandardViews[static_cast<std::size_t>(view)].mDirection,
                            kStandardViews[static_cast<std::size_t>(view)].mUp)) {}

Camera Camera::FromDirections(const Triple& direction, const Triple& up) {
  Triple forward = Normalise(direction);
  Triple right = Normalise(Cross(forward, Normalise(up)));
  if (Dot(right, right) < 0.5) {
    const ViewDirections& front = kStandardViews[0];
    forward = front.mDirection;
    right = Cross(forward, front.mUp);
  }
  Camera camera;
  camera.mBack = {-forward[0], -forward[1], -forward[2]};
  camera.mRight = right;
  camera.mUp = Cross(right, forward);
  return camera;
}

void Camera::Fit(const Box& box, const Rectangle& viewport) {
  mTarget = box.GetCentre();
  double halfWidth = 0;
  double halfHeight = 0;
  ForEachCorner(box, [&](const Triple& corner) {
    if (box.IsEmpty()) return;
    const Triple offset = Subtract(corner, mTarget);
    halfWidth = std::max(halfWidth, std::abs(Dot(offset, mRight)));
    halfHeight = std::max(halfHeight, std::abs(Dot(offset, mUp)));
  });
  const double room = 1 - 2 * kMargin;
  const double height = 2 * std::max(halfHeight, halfWidth * viewport.mHeight / viewport.mWidth);
  LookAt(mTarget, height / room, box, viewport);
}

void Camera::LookAt(const Triple& target, double height, const Box& box,
                    const Rectangle& viewport) {
  mIsPerspective = false;
  mTarget = target;
  mViewport = viewport;
  mScale = height > 0 && std::isfinite(height) ? viewport.mHeight / height : 1;
  const double radius = box.GetRadius() > 0 ? box.GetRadius() : 1;
  mDepthScale = 0.499 / radius;
  mDepthOffset = 0.5 - Dot(Subtract(box.GetCentre(), target), mBack) * mDepthScale;
}

void Camera::PlaceEye(const Triple& eye, double angle, const Box& box, const Rectangle& viewport) {
  mIsPerspective = true;
  mTarget = eye;
  mViewport = viewport;
  mFocalLength = viewport.mHeight / (2 * std::tan(std::clamp(angle, 0.01, 3.0) / 2));
  const Triple offset = Subtract(box.GetCentre(), eye);
  const double distance = std::max(-Dot(offset, mBack), 0.0);
  const double radius = box.GetRadius();
  const double size = std::max(radius, std::sqrt(Dot(offset, offset)));
  mNear = size > 0 ? std::max(distance - 1.01 * radius, 0.001 * size) : 1;
  mScale = mFocalLength / std::max(distance, mNear);
}

std::optional<ScreenPoint> Camera::Project(const Triple& point) const {
  const Triple view = ToView(point);
  if (mIsPerspective && !(view[2] <= -mNear)) return std::nullopt;
  const ScreenPoint screen = ToScreen(view);
  if (!std::isfinite(screen.mX) || !std::isfinite(screen.mY)) return std::nullopt;
  return screen;
}

}  // namespace Qov::Tools
