#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "mesh/Vectors.h"
#include "picture/Image.h"

namespace Qov::Tools {

using QovMesh::Triple;

/// The smallest box around points. Coordinates that are not finite are ignored, with their point.
class Box {
 public:
  void Include(const Triple& point);
  void Include(const Box& box);
  /// Includes points of three coordinates each.
  void IncludeAll(std::span<const float> points);

  bool IsEmpty() const { return mLow[0] > mHigh[0]; }
  Triple GetLow() const { return mLow; }
  Triple GetHigh() const { return mHigh; }
  /// Returns the origin if the box is empty.
  Triple GetCentre() const;
  /// Returns half of the diagonal, 0 for a point or an empty box.
  double GetRadius() const;

 private:
  Triple mLow = {1, 1, 1};
  Triple mHigh = {-1, -1, -1};
};

/// z points up. Front looks along +y, with x to the right; Left looks along +x, from the low end;
/// Top looks down, with y up in the image; Bottom looks up, with y down in the image. Iso looks
/// from (1, -1, 1).
enum class StandardView : std::uint8_t { Front, Back, Left, Right, Top, Bottom, Iso };

/// Returns nothing for an unknown name. The names are front, back, left, right, top, bottom, iso.
std::optional<StandardView> FindStandardView(std::string_view name);

/// A place of the image in pixels; the centre of the upper left pixel is (0.5, 0.5).
struct ScreenPoint {
  double mX = 0;
  double mY = 0;
  /// Above 0 (farthest) to 1 (nearest), linear on the screen.
  double mDepth = 0;
};

/// The depth of all places that are farther away than the box of an orthographic camera.
inline constexpr double kLeastDepth = 1e-6;

/// Maps places of the model to pixels. All arithmetic is in double, relative to the target, so that
/// coordinates up to the limits of float do not overflow.
class Camera {
 public:
  /// An orthographic camera; Fit() has to follow.
  explicit Camera(StandardView view);

  /// Returns an orthographic camera that looks along `direction`, with `up` up in the image; Fit()
  /// has to follow. Directions that are 0, parallel or not finite are replaced by those of Front.
  static Camera FromDirections(const Triple& direction, const Triple& up);

  /// Sets the target to the centre of the box, and the scale so that the box fits into the viewport
  /// with a margin of 4 %.
  void Fit(const Box& box, const Rectangle& viewport);

  /// Puts an orthographic camera at `target`; `height` is the height of the viewport in units of
  /// the model. `box` contains everything that is drawn.
  void LookAt(const Triple& target, double height, const Box& box, const Rectangle& viewport);

  /// Puts a perspective camera at `eye`. `angle` is the vertical angle of the viewport in radians,
  /// 0.01 to 3. `box` contains everything that is drawn.
  void PlaceEye(const Triple& eye, double angle, const Box& box, const Rectangle& viewport);

  /// Returns the place on the screen. In perspective, places before the near plane are not visible:
  /// nothing is returned.
  std::optional<ScreenPoint> Project(const Triple& point) const;

  bool IsPerspective() const { return mIsPerspective; }
  const Rectangle& GetViewport() const { return mViewport; }
  const Triple& GetRight() const { return mRight; }
  const Triple& GetUp() const { return mUp; }
  /// The direction from the target to the eye.
  const Triple& GetBack() const { return mBack; }
  /// Pixels for each unit of the model; in perspective, at the centre of the box.
  double GetScale() const { return mScale; }

  /// Rotates a direction: to the right, up, toward the viewer.
  Triple Turn(const Triple& d) const {
    return {d[0] * mRight[0] + d[1] * mRight[1] + d[2] * mRight[2],
            d[0] * mUp[0] + d[1] * mUp[1] + d[2] * mUp[2],
            d[0] * mBack[0] + d[1] * mBack[1] + d[2] * mBack[2]};
  }
  /// Returns x (to the right), y (up) and z (toward the viewer) relative to the target or the eye,
  /// in units of the model.
  Triple ToView(const Triple& point) const {
    return Turn({point[0] - mTarget[0], point[1] - mTarget[1], point[2] - mTarget[2]});
  }
  /// Maps the result of ToView to the screen. In perspective, z has to be at most -GetNear().
  ScreenPoint ToScreen(const Triple& view) const {
    const double x = mViewport.mX + 0.5 * mViewport.mWidth;
    const double y = mViewport.mY + 0.5 * mViewport.mHeight;
    if (mIsPerspective) {
      const double scale = mFocalLength / -view[2];
      return {x + view[0] * scale, y - view[1] * scale, mNear / -view[2]};
    }
    const double depth = std::clamp(mDepthOffset + view[2] * mDepthScale, kLeastDepth, 1.0);
    return {x + view[0] * mScale, y - view[1] * mScale, depth};
  }
  /// The distance of the near plane from the eye, in perspective.
  double GetNear() const { return mNear; }

 private:
  Camera() = default;

  Triple mRight{};
  Triple mUp{};
  Triple mBack{};
  Triple mTarget{};  ///< The eye, in perspective.
  double mScale = 1;
  double mFocalLength = 1;  ///< In pixels; of perspective cameras.
  double mNear = 1;         ///< Of perspective cameras.
  double mDepthScale = 0;   ///< Of orthographic cameras, like the offset.
  double mDepthOffset = 0;
  bool mIsPerspective = false;
  Rectangle mViewport;
};

}  // namespace Qov::Tools
