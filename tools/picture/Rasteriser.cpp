#include "picture/Rasteriser.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <deque>
#include <limits>
#include <optional>
#include <vector>

#include "mesh/Vectors.h"
#include "picture/SampleBuffer.h"
#include "picture/Shading.h"

namespace Qov::Tools {
namespace {

using QovMesh::Dot;

/// Lines, points and markers are drawn on top of a surface that they are part of: they are moved
/// toward the viewer by this share of the depth.
constexpr double kNearer = 5e-4;
/// Smoothing stops above this number of samples, because they take 8 bytes each.
constexpr double kMostSamples = 64e6;

/// A corner before the projection.
struct ViewCorner {
  Triple mView{};
  float mPlace = 0;
  float mShade = 1;
};

bool IsFinite(const Triple& v) { return std::isfinite(v[0] + v[1] + v[2]); }

ViewCorner Between(const ViewCorner& a, const ViewCorner& b, double share) {
  ViewCorner c;
  for (std::size_t k = 0; k < 3; ++k) c.mView[k] = a.mView[k] + (b.mView[k] - a.mView[k]) * share;
  const auto mix = [&](float x, float y) { return x + (y - x) * static_cast<float>(share); };
  c.mPlace = mix(a.mPlace, b.mPlace);
  c.mShade = mix(a.mShade, b.mShade);
  return c;
}

/// Returns edges as less visible the smaller a triangle is, because they would cover it.
float EdgeStrength(const ScreenTriangle& triangle, int smoothing) {
  const auto& c = triangle.mCorners;
  const double x1 = c[1].mX - c[0].mX;
  const double y1 = c[1].mY - c[0].mY;
  const double x2 = c[2].mX - c[0].mX;
  const double y2 = c[2].mY - c[0].mY;
  const double longest =
      std::max({std::hypot(x1, y1), std::hypot(x2, y2), std::hypot(x2 - x1, y2 - y1), 1e-30});
  const double height = std::abs(x1 * y2 - x2 * y1) / longest / smoothing;  // in pixels
  return static_cast<float>(std::clamp((height - 1) / 4, 0.0, 1.0));
}

int ChooseSmoothing(const Rectangle& viewport, int smoothing) {
  const double samples = double(viewport.mWidth) * viewport.mHeight * smoothing * smoothing;
  return smoothing < 1 || samples > kMostSamples ? 1 : smoothing;
}

}  // namespace

class Rasteriser::Implementation {
 public:
  Implementation(Image& image, const Camera& camera, int smoothing)
      : mImage(image),
        mCamera(camera),
        mSamples(camera.GetViewport().mWidth, camera.GetViewport().mHeight,
                 ChooseSmoothing(camera.GetViewport(), smoothing)) {}

  void Draw(const ShadedSurface& surface, const ColourScale* pScale) {
    mpSurface = &surface;
    mpScale = surface.mValuesAt == ValuesAt::None ? nullptr : pScale;
    if (mpScale != nullptr) ChoosePalette();
    DrawTriangles();
    DrawLines();
    if (surface.mDrawPoints) DrawPoints();
  }

  void Finish() {
    std::sort(mTransparent.begin(), mTransparent.end(),
              [](const ScreenTriangle& a, const ScreenTriangle& b) {
                return MeanDepth(a) < MeanDepth(b);
              });
    const Rectangle& viewport = mCamera.GetViewport();
    for (const ScreenTriangle& triangle : mTransparent) {
      mSamples.Blend(triangle, mImage, viewport);
    }
    mSamples.Resolve(mImage, viewport);
    mTransparent.clear();
  }

  bool IsVisible(const Triple& point) const {
    const auto screen = mCamera.Project(point);
    if (!screen) return false;
    const Rectangle& viewport = mCamera.GetViewport();
    const double x = (screen->mX - viewport.mX) * mSamples.GetSmoothing();
    const double y = (screen->mY - viewport.mY) * mSamples.GetSmoothing();
    if (!(x >= 0 && y >= 0 && x < mSamples.GetWidth() && y < mSamples.GetHeight())) return false;
    // A point on an edge may be next to the samples of its own triangles.
    float least = std::numeric_limits<float>::infinity();
    for (int dy = -1; dy <= 1; ++dy) {
      for (int dx = -1; dx <= 1; ++dx) {
        const int sx = std::clamp(static_cast<int>(x) + dx, 0, mSamples.GetWidth() - 1);
        const int sy = std::clamp(static_cast<int>(y) + dy, 0, mSamples.GetHeight() - 1);
        least = std::min(least, mSamples.GetDepth(sx, sy));
      }
    }
    return Nearer(screen->mDepth) >= least;
  }

 private:
  static float MeanDepth(const ScreenTriangle& t) {
    return (t.mCorners[0].mDepth + t.mCorners[1].mDepth + t.mCorners[2].mDepth) / 3;
  }

  /// The palettes are kept until Finish, for the transparent triangles.
  void ChoosePalette() {
    std::vector<Sample> palette;
    for (const Colour colour : mpScale->GetPalette()) palette.push_back(PackColour(colour));
    if (mPalettes.empty() || mPalettes.back() != palette) mPalettes.push_back(std::move(palette));
  }

  // ---- points of the surface

  std::size_t GetNumPoints() const { return mpSurface->mPoints.size() / 3; }

  /// Returns false for points that do not exist or are not finite.
  bool View(std::uint32_t point, Triple& view) const {
    if (point >= GetNumPoints()) return false;
    const auto p = mpSurface->mPoints.subspan(std::size_t{3} * point, 3);
    view = mCamera.ToView({p[0], p[1], p[2]});
    return IsFinite(view);
  }

  /// Returns the place of a value on the palette; NaN for missing values.
  float PlaceOf(std::size_t i) const {
    constexpr float kMostPlace = 1e12F;  // differences do not overflow
    if (i >= mpSurface->mValues.size()) return std::numeric_limits<float>::quiet_NaN();
    const float place = mpScale->PlaceOf(mpSurface->mValues[i]);
    return place == place ? std::clamp(place, -kMostPlace, kMostPlace) : place;
  }

  /// Sets the colour of a shape whose corners have `points`, and the places of its corners.
  template <std::size_t N>
  void ChooseColour(std::array<ViewCorner, N>& corners, const std::uint32_t* points,
                    std::span<const std::uint32_t> cells, std::size_t shape, Paint& paint) const {
    paint.mColour = PackColour(mpSurface->mColour);
    if (mpSurface->mValuesAt == ValuesAt::None) return;
    paint.mColour = PackColour(kNoValueColour);
    if (mpScale == nullptr) return;
    if (mpSurface->mValuesAt == ValuesAt::Cell) {
      if (shape < cells.size())
        paint.mColour = PackColour(mpScale->ColourAt(PlaceOf(cells[shape])));
      return;
    }
    for (std::size_t i = 0; i < N; ++i) {
      corners[i].mPlace = PlaceOf(points[i]);
      if (!(corners[i].mPlace == corners[i].mPlace)) return;
    }
    paint.mpPalette = mPalettes.back().data();
    paint.mNumColours = mPalettes.back().size();
  }

  // ---- shapes

  /// Draws the triangles that face the viewer first: those of solids hide the others, so that no
  /// colours are computed for these.
  void DrawTriangles() {
    const auto& triangles = mpSurface->mTriangles;
    std::optional<SmoothNormals> normals;
    if (mpSurface->mSmooth) normals.emplace(mpSurface->mPoints, triangles, mCamera);
    std::vector<std::uint32_t> facingAway;  // positions in the triangles
    for (std::uint32_t i = 0; i < triangles.size() / 3; ++i) {
      std::array<ViewCorner, 3> c;
      if (!ViewTriangle(i, c)) continue;
      const Triple normal = NormalOf(c[0].mView, c[1].mView, c[2].mView);
      if (Dot(normal, ToViewer(c[0].mView)) > 0) {
        DrawTriangle(i, c, normal, normals);
      } else {
        facingAway.push_back(i);
      }
    }
    for (const std::uint32_t i : facingAway) {
      std::array<ViewCorner, 3> c;
      ViewTriangle(i, c);
      DrawTriangle(i, c, NormalOf(c[0].mView, c[1].mView, c[2].mView), normals);
    }
  }

  bool ViewTriangle(std::size_t i, std::array<ViewCorner, 3>& c) const {
    const std::uint32_t* points = mpSurface->mTriangles.data() + 3 * i;
    return View(points[0], c[0].mView) && View(points[1], c[1].mView) &&
           View(points[2], c[2].mView);
  }

  void DrawTriangle(std::size_t i, std::array<ViewCorner, 3>& c, const Triple& normal,
                    const std::optional<SmoothNormals>& normals) {
    const std::uint32_t* points = mpSurface->mTriangles.data() + 3 * i;
    Paint paint = MakePaint();
    ChooseColour(c, points, mpSurface->mTriangleCells, i, paint);
    Shade(c, points, normal, normals);
    if (mpSurface->mEdges) paint.mEdges = EdgesOf(i);
    ClipTriangle(c, paint);
  }

  std::uint8_t EdgesOf(std::size_t triangle) const {
    const auto& edges = mpSurface->mTriangleEdges;
    return triangle < edges.size() ? edges[triangle] : std::uint8_t{7};
  }

  Paint MakePaint() const {
    Paint paint;
    paint.mOpacity = std::clamp(mpSurface->mOpacity, 0.0F, 1.0F);
    paint.mIsPerspective = mCamera.IsPerspective();
    return paint;
  }

  Triple ToViewer(const Triple& view) const {
    return mCamera.IsPerspective() ? Triple{-view[0], -view[1], -view[2]} : Triple{0, 0, 1};
  }

  void Shade(std::array<ViewCorner, 3>& c, const std::uint32_t* points, const Triple& normal,
             const std::optional<SmoothNormals>& normals) const {
    if (!normals) {
      const float shade = Brightness(normal, ToViewer(c[0].mView));
      for (ViewCorner& corner : c) corner.mShade = shade;
      return;
    }
    for (std::size_t i = 0; i < 3; ++i) {
      const Triple smooth = normals->At(points[i], normal);
      c[i].mShade = Brightness(smooth, ToViewer(c[i].mView));
    }
  }

  void DrawLines() {
    const auto& lines = mpSurface->mLines;
    for (std::size_t i = 0; i + 1 < lines.size(); i += 2) {
      const std::uint32_t* points = lines.data() + i;
      std::array<ViewCorner, 2> c;
      if (!View(points[0], c[0].mView) || !View(points[1], c[1].mView)) continue;
      Paint paint = MakePaint();
      ChooseColour(c, points, mpSurface->mLineCells, i / 2, paint);
      if (!ClipLine(c)) continue;
      DrawLine(ToScreen(c[0]), ToScreen(c[1]), paint);
    }
  }

  /// Draws a line as a rectangle that faces the viewer.
  void DrawLine(ScreenCorner a, ScreenCorner b, const Paint& paint) {
    MoveNearer(a);
    MoveNearer(b);
    const double half = 0.5 * std::max(mpSurface->mLineWidth, 0.0F) * mSamples.GetSmoothing();
    const double dx = b.mX - a.mX;
    const double dy = b.mY - a.mY;
    const double length = std::hypot(dx, dy);
    if (!std::isfinite(length)) return;
    const double alongX = length > 0 ? dx / length * half : half;
    const double alongY = length > 0 ? dy / length * half : 0;
    const auto corner = [&](const ScreenCorner& end, double along, double side) {
      ScreenCorner c = end;
      c.mX += along * alongX - side * alongY;
      c.mY += along * alongY + side * alongX;
      return c;
    };
    // The ends reach beyond the points, so that lines that follow one another have no gaps.
    const ScreenCorner a0 = corner(a, -0.5, -1);
    const ScreenCorner a1 = corner(a, -0.5, 1);
    const ScreenCorner b0 = corner(b, 0.5, -1);
    const ScreenCorner b1 = corner(b, 0.5, 1);
    Emit({{a0, a1, b0}, paint});
    Emit({{b0, a1, b1}, paint});
  }

  void DrawPoints() {
    const double radius = 0.5 * std::max(mpSurface->mPointSize, 1.0F) * mSamples.GetSmoothing();
    for (std::uint32_t i = 0; i < GetNumPoints(); ++i) {
      std::array<ViewCorner, 1> c;
      if (!View(i, c[0].mView)) continue;
      if (mCamera.IsPerspective() && !(c[0].mView[2] <= -mCamera.GetNear())) continue;
      Paint paint;
      ChooseColour(c, &i, {}, 0, paint);
      if (paint.mpPalette != nullptr) paint.mColour = PackColour(mpScale->ColourAt(c[0].mPlace));
      ScreenCorner corner = ToScreen(c[0]);
      MoveNearer(corner);
      mSamples.FillDisc(corner, radius, paint.mColour);
    }
  }

  // ---- clipping and projection

  bool IsBeforeNear(const ViewCorner& c) const { return c.mView[2] > -mCamera.GetNear(); }

  ViewCorner CrossNear(const ViewCorner& a, const ViewCorner& b) const {
    ViewCorner c = Between(a, b, (-mCamera.GetNear() - a.mView[2]) / (b.mView[2] - a.mView[2]));
    c.mView[2] = -mCamera.GetNear();
    return c;
  }

  bool ClipLine(std::array<ViewCorner, 2>& c) const {
    if (!mCamera.IsPerspective()) return true;
    if (IsBeforeNear(c[0]) && IsBeforeNear(c[1])) return false;
    if (IsBeforeNear(c[0])) c[0] = CrossNear(c[0], c[1]);
    if (IsBeforeNear(c[1])) c[1] = CrossNear(c[0], c[1]);
    return true;
  }

  /// Emits the part of the triangle after the near plane; a part is drawn without edges.
  void ClipTriangle(const std::array<ViewCorner, 3>& c, const Paint& paint) {
    if (!mCamera.IsPerspective() ||
        (!IsBeforeNear(c[0]) && !IsBeforeNear(c[1]) && !IsBeforeNear(c[2]))) {
      return Emit({{ToScreen(c[0]), ToScreen(c[1]), ToScreen(c[2])}, paint});
    }
    std::array<ViewCorner, 4> kept;
    std::size_t numKept = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      const ViewCorner& next = c[(i + 1) % 3];
      if (!IsBeforeNear(c[i])) kept[numKept++] = c[i];
      if (IsBeforeNear(c[i]) != IsBeforeNear(next)) kept[numKept++] = CrossNear(c[i], next);
    }
    Paint part = paint;
    part.mEdges = 0;
    for (std::size_t i = 2; i < numKept; ++i) {
      Emit({{ToScreen(kept[0]), ToScreen(kept[i - 1]), ToScreen(kept[i])}, part});
    }
  }

  ScreenCorner ToScreen(const ViewCorner& corner) const {
    const ScreenPoint screen = mCamera.ToScreen(corner.mView);
    const Rectangle& viewport = mCamera.GetViewport();
    const int smoothing = mSamples.GetSmoothing();
    const auto depth = static_cast<float>(screen.mDepth);
    return {(screen.mX - viewport.mX) * smoothing, (screen.mY - viewport.mY) * smoothing, depth,
            mCamera.IsPerspective() ? corner.mPlace * depth : corner.mPlace, corner.mShade};
  }

  double Nearer(double depth) const {
    return mCamera.IsPerspective() ? depth * (1 + kNearer) : depth + kNearer;
  }

  void MoveNearer(ScreenCorner& corner) const {
    const auto nearer = static_cast<float>(Nearer(corner.mDepth));
    if (mCamera.IsPerspective()) corner.mPlace *= nearer / corner.mDepth;
    corner.mDepth = nearer;
  }

  void Emit(ScreenTriangle triangle) {
    for (const ScreenCorner& c : triangle.mCorners) {
      if (!std::isfinite(c.mX + c.mY)) return;
    }
    if (triangle.mPaint.mEdges != 0) {
      triangle.mPaint.mEdgeStrength = EdgeStrength(triangle, mSamples.GetSmoothing());
    }
    if (triangle.mPaint.mOpacity < 1) {
      mTransparent.push_back(triangle);
    } else {
      mSamples.Fill(triangle);
    }
  }

  Image& mImage;
  const Camera mCamera;
  SampleBuffer mSamples;
  std::vector<ScreenTriangle> mTransparent;
  std::deque<std::vector<Sample>> mPalettes;
  // The surface that is drawn now.
  const ShadedSurface* mpSurface = nullptr;
  const ColourScale* mpScale = nullptr;
};

Rasteriser::Rasteriser(Image& image, const Camera& camera, int smoothing)
    : mpImplementation(std::make_unique<Implementation>(image, camera, smoothing)) {}

Rasteriser::~Rasteriser() = default;

void Rasteriser::Draw(const ShadedSurface& surface, const ColourScale* pScale) {
  mpImplementation->Draw(surface, pScale);
}

void Rasteriser::Finish() { mpImplementation->Finish(); }

bool Rasteriser::IsVisible(const Triple& point) const { return mpImplementation->IsVisible(point); }

}  // namespace Qov::Tools
