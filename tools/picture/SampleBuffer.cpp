#include "picture/SampleBuffer.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

namespace Qov::Tools {
namespace {

/// Returns zeroed memory. The system provides its pages when they are written first, so that
/// samples that nothing covers cost nothing.
template <class T>
T* AllocateZeroed(int width, int height) {
  void* p =
      std::calloc(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), sizeof(T));
  if (p == nullptr) throw std::bad_alloc();
  return static_cast<T*>(p);
}

/// Returns the first sample whose centre is at or after the coordinate, 0 to `size`.
int FirstSample(double coordinate, int size) {
  return static_cast<int>(std::ceil(std::clamp(coordinate, 0.0, double(size)) - 0.5));
}

/// A side of a triangle, from its upper to its lower end. Triangles that share a side compute the
/// same crossings, because they start at the same end.
struct Side {
  double mX = 0;
  double mY = 0;
  double mSlope = 0;

  Side(const ScreenCorner& upper, const ScreenCorner& lower)
      : mX(upper.mX),
        mY(upper.mY),
        mSlope(lower.mY > upper.mY ? (lower.mX - upper.mX) / (lower.mY - upper.mY) : 0) {}
  double CrossingAt(double y) const { return mX + (y - mY) * mSlope; }
};

/// A linear function of the screen.
struct Plane {
  double mAtFirst = 0;  ///< The value at the first corner.
  double mPerX = 0;
  double mPerY = 0;

  double At(double x, double y) const { return mAtFirst + x * mPerX + y * mPerY; }
};

/// The linear functions over a triangle, from values at its corners.
class Planes {
 public:
  explicit Planes(const ScreenTriangle& triangle)
      : mFirst(triangle.mCorners[0]),
        mX1(triangle.mCorners[1].mX - mFirst.mX),
        mY1(triangle.mCorners[1].mY - mFirst.mY),
        mX2(triangle.mCorners[2].mX - mFirst.mX),
        mY2(triangle.mCorners[2].mY - mFirst.mY),
        mArea(mX1 * mY2 - mX2 * mY1) {}

  /// Returns the mean for triangles that are so narrow that gradients are not reliable.
  Plane Through(double a, double b, double c) const {
    constexpr double kLeastArea = 1e-6;  // in samples
    if (std::abs(mArea) < kLeastArea) return {(a + b + c) / 3, 0, 0};
    return {a, ((b - a) * mY2 - (c - a) * mY1) / mArea, ((c - a) * mX1 - (b - a) * mX2) / mArea};
  }
  /// Returns the distance from the side opposite of a corner. Sides that are not drawn are far
  /// away.
  Plane DistanceFrom(std::size_t side, std::uint8_t edges) const {
    if ((edges >> side & 1U) == 0) return {1e9, 0, 0};
    const double lengthX = side == 0 ? mX1 : side == 1 ? mX2 - mX1 : mX2;
    const double lengthY = side == 0 ? mY1 : side == 1 ? mY2 - mY1 : mY2;
    const double height = std::abs(mArea) / std::max(std::hypot(lengthX, lengthY), 1e-30);
    return Through(side == 1 ? height : 0, side == 2 ? height : 0, side == 0 ? height : 0);
  }
  double X(double x) const { return x - mFirst.mX; }
  double Y(double y) const { return y - mFirst.mY; }

 private:
  const ScreenCorner& mFirst;
  double mX1, mY1, mX2, mY2;
  double mArea;
};

/// A linear function along a row of samples.
struct Ramp {
  float mStart = 0;
  float mPerSample = 0;

  Ramp() = default;
  Ramp(const Plane& plane, double x, double y)
      : mStart(static_cast<float>(plane.At(x, y))), mPerSample(static_cast<float>(plane.mPerX)) {}
  float At(int i) const { return mStart + static_cast<float>(i) * mPerSample; }
};

Colour Darken(Colour colour, float shade) {
  const int factor = static_cast<int>(std::clamp(shade, 0.0F, 1.0F) * 256);
  for (std::uint8_t& channel : colour) {
    channel = static_cast<std::uint8_t>(static_cast<int>(channel) * factor >> 8);
  }
  return colour;
}

/// Computes the colours of a triangle's samples.
class Painter {
 public:
  Painter(const ScreenTriangle& triangle, const Planes& planes, float edgeWidth)
      : mPaint(triangle.mPaint), mPlanes(planes), mEdgeReach(edgeWidth / 2) {
    const auto& c = triangle.mCorners;
    mShade = planes.Through(c[0].mShade, c[1].mShade, c[2].mShade);
    mPlace = planes.Through(c[0].mPlace, c[1].mPlace, c[2].mPlace);
    mHasEdges = mPaint.mEdges != 0 && mPaint.mEdgeStrength > 0;
    if (!mHasEdges) return;
    for (std::size_t i = 0; i < 3; ++i) mDistances[i] = planes.DistanceFrom(i, mPaint.mEdges);
  }

  void StartRow(double x, double y) {
    const double px = mPlanes.X(x);
    const double py = mPlanes.Y(y);
    mShadeRamp = Ramp(mShade, px, py);
    mPlaceRamp = Ramp(mPlace, px, py);
    if (!mHasEdges) return;
    for (std::size_t i = 0; i < 3; ++i) mDistanceRamps[i] = Ramp(mDistances[i], px, py);
  }

  Colour ColourAt(int i, float depth) const {
    float shade = mShadeRamp.At(i);
    if (mHasEdges && IsOnEdge(i)) shade *= 1 - kEdgeDarkness * mPaint.mEdgeStrength;
    return Darken(mPaint.mpPalette != nullptr ? ColourAtPlace(i, depth) : mPaint.mColour, shade);
  }

 private:
  static constexpr float kEdgeDarkness = 0.7F;

  Colour ColourAtPlace(int i, float depth) const {
    const float place = mPlaceRamp.At(i) / (mPaint.mIsPerspective ? depth : 1);
    const auto last = static_cast<float>(mPaint.mNumColours - 1);
    return mPaint.mpPalette[static_cast<std::size_t>(std::clamp(place, 0.0F, last))];
  }
  bool IsOnEdge(int i) const {
    return std::min({mDistanceRamps[0].At(i), mDistanceRamps[1].At(i), mDistanceRamps[2].At(i)}) <
           mEdgeReach;
  }

  const Paint& mPaint;
  const Planes& mPlanes;
  float mEdgeReach;
  bool mHasEdges = false;
  Plane mShade, mPlace;
  std::array<Plane, 3> mDistances;
  Ramp mShadeRamp, mPlaceRamp;
  std::array<Ramp, 3> mDistanceRamps;
};

/// Calls `visit(y, x0, x1)` for the samples x0 to x1 of each row that the triangle covers.
template <class Visitor>
void ForEachSpan(const ScreenTriangle& triangle, int width, int height, Visitor visit) {
  std::array<const ScreenCorner*, 3> c = {&triangle.mCorners[0], &triangle.mCorners[1],
                                          &triangle.mCorners[2]};
  if (c[1]->mY < c[0]->mY) std::swap(c[0], c[1]);
  if (c[2]->mY < c[1]->mY) std::swap(c[1], c[2]);
  if (c[1]->mY < c[0]->mY) std::swap(c[0], c[1]);
  const int first = FirstSample(c[0]->mY, height);
  const int middle = FirstSample(c[1]->mY, height);
  const int end = FirstSample(c[2]->mY, height);
  if (first == end) return;
  const Side whole(*c[0], *c[2]);
  const auto visitRows = [&](const Side& side, int from, int to) {
    for (int y = from; y < to; ++y) {
      const double a = whole.CrossingAt(y + 0.5);
      const double b = side.CrossingAt(y + 0.5);
      const int x0 = FirstSample(std::min(a, b), width);
      const int x1 = FirstSample(std::max(a, b), width);
      if (x0 < x1) visit(y, x0, x1);
    }
  };
  visitRows(Side(*c[0], *c[1]), first, middle);
  visitRows(Side(*c[1], *c[2]), middle, end);
}

}  // namespace

SampleBuffer::SampleBuffer(int width, int height, int smoothing)
    : mSmoothing(smoothing),
      mWidth(width * smoothing),
      mHeight(height * smoothing),
      mFirstRow(mHeight),
      mpDepths(AllocateZeroed<float>(mWidth, mHeight)),
      mpSamples(AllocateZeroed<Sample>(mWidth, mHeight)) {}

SampleBuffer::Sample SampleBuffer::Pack(Colour colour) {
  return 0xFF000000U | static_cast<Sample>(colour[0]) << 16U |
         static_cast<Sample>(colour[1]) << 8U | colour[2];
}

Colour SampleBuffer::Unpack(Sample sample) {
  return {static_cast<std::uint8_t>(sample >> 16U), static_cast<std::uint8_t>(sample >> 8U),
          static_cast<std::uint8_t>(sample)};
}

void SampleBuffer::MarkRows(int first, int end) {
  mFirstRow = std::min(mFirstRow, first);
  mEndRow = std::max(mEndRow, end);
}

void SampleBuffer::Fill(const ScreenTriangle& triangle) {
  const auto& c = triangle.mCorners;
  const Planes planes(triangle);
  const Plane depths = planes.Through(c[0].mDepth, c[1].mDepth, c[2].mDepth);
  const Paint& paint = triangle.mPaint;
  const bool isPlain = paint.mpPalette == nullptr && paint.mEdges == 0 &&
                       c[0].mShade == c[1].mShade && c[1].mShade == c[2].mShade;
  if (isPlain) {
    const Sample colour = Pack(Darken(paint.mColour, c[0].mShade));
    ForEachSpan(triangle, mWidth, mHeight, [&](int y, int x0, int x1) {
      const Ramp ramp(depths, planes.X(x0 + 0.5), planes.Y(y + 0.5));
      float* pDepth = &mpDepths[Position(x0, y)];
      Sample* pSample = &mpSamples[Position(x0, y)];
      for (int i = 0; i < x1 - x0; ++i) {
        const float depth = ramp.At(i);
        if (depth <= pDepth[i]) continue;
        pDepth[i] = depth;
        pSample[i] = colour;
      }
      MarkRows(y, y + 1);
    });
    return;
  }
  Painter painter(triangle, planes, static_cast<float>(mSmoothing));
  ForEachSpan(triangle, mWidth, mHeight, [&](int y, int x0, int x1) {
    const Ramp ramp(depths, planes.X(x0 + 0.5), planes.Y(y + 0.5));
    painter.StartRow(x0 + 0.5, y + 0.5);
    float* pDepth = &mpDepths[Position(x0, y)];
    Sample* pSample = &mpSamples[Position(x0, y)];
    for (int i = 0; i < x1 - x0; ++i) {
      const float depth = ramp.At(i);
      if (depth <= pDepth[i]) continue;
      pDepth[i] = depth;
      pSample[i] = Pack(painter.ColourAt(i, depth));
    }
    MarkRows(y, y + 1);
  });
}

Colour SampleBuffer::PixelOf(const Image& image, const Rectangle& viewport, int x, int y) const {
  const int pixelX = viewport.mX + x / mSmoothing;
  const int pixelY = viewport.mY + y / mSmoothing;
  const bool isInside =
      pixelX >= 0 && pixelY >= 0 && pixelX < image.GetWidth() && pixelY < image.GetHeight();
  return isInside ? image.At(pixelX, pixelY) : Colour{};
}

void SampleBuffer::Blend(const ScreenTriangle& triangle, const Image& image,
                         const Rectangle& viewport) {
  const auto& c = triangle.mCorners;
  const Planes planes(triangle);
  const Plane depths = planes.Through(c[0].mDepth, c[1].mDepth, c[2].mDepth);
  Painter painter(triangle, planes, static_cast<float>(mSmoothing));
  ForEachSpan(triangle, mWidth, mHeight, [&](int y, int x0, int x1) {
    const Ramp ramp(depths, planes.X(x0 + 0.5), planes.Y(y + 0.5));
    painter.StartRow(x0 + 0.5, y + 0.5);
    for (int i = 0; i < x1 - x0; ++i) {
      const float depth = ramp.At(i);
      const std::size_t position = Position(x0 + i, y);
      if (depth <= mpDepths[position]) continue;
      Sample& sample = mpSamples[position];
      const Colour below = sample != 0 ? Unpack(sample) : PixelOf(image, viewport, x0 + i, y);
      sample = Pack(MixColours(below, painter.ColourAt(i, depth), triangle.mPaint.mOpacity));
    }
    MarkRows(y, y + 1);
  });
}

void SampleBuffer::FillDisc(const ScreenCorner& centre, double radius, Colour colour) {
  const int first = FirstSample(centre.mY - radius, mHeight);
  const int end = FirstSample(centre.mY + radius, mHeight);
  for (int y = first; y < end; ++y) {
    const double offset = y + 0.5 - centre.mY;
    const double half = std::sqrt(std::max(0.0, radius * radius - offset * offset));
    const int x1 = FirstSample(centre.mX + half, mWidth);
    for (int x = FirstSample(centre.mX - half, mWidth); x < x1; ++x) {
      float& depth = mpDepths[Position(x, y)];
      if (centre.mDepth <= depth) continue;
      depth = centre.mDepth;
      mpSamples[Position(x, y)] = Pack(Darken(colour, centre.mShade));
    }
  }
  if (first < end) MarkRows(first, end);
}

void SampleBuffer::Resolve(Image& image, const Rectangle& viewport) const {
  const int numSamples = mSmoothing * mSmoothing;
  const int endRow = std::min((mEndRow + mSmoothing - 1) / mSmoothing, viewport.mHeight);
  for (int y = mFirstRow / mSmoothing; y < endRow; ++y) {
    const int pixelY = viewport.mY + y;
    if (pixelY < 0 || pixelY >= image.GetHeight()) continue;
    const int beginX = std::max(0, -viewport.mX);
    const int endX = std::min(viewport.mWidth, image.GetWidth() - viewport.mX);
    for (int x = beginX; x < endX; ++x) {
      Colour& pixel = image.At(viewport.mX + x, pixelY);
      const Sample* pFirst = &mpSamples[Position(x * mSmoothing, y * mSmoothing)];
      const Sample first = *pFirst;
      std::array<int, 3> sums{};
      bool isEven = true;
      for (int sy = 0; sy < mSmoothing; ++sy) {
        for (int sx = 0; sx < mSmoothing; ++sx)
          isEven = isEven && pFirst[sy * mWidth + sx] == first;
      }
      if (isEven) {
        if (first != 0) pixel = Unpack(first);
        continue;
      }
      for (int sy = 0; sy < mSmoothing; ++sy) {
        for (int sx = 0; sx < mSmoothing; ++sx) {
          const Sample sample = pFirst[sy * mWidth + sx];
          const Colour colour = sample != 0 ? Unpack(sample) : pixel;
          for (std::size_t k = 0; k < 3; ++k) sums[k] += colour[k];
        }
      }
      for (std::size_t k = 0; k < 3; ++k) {
        pixel[k] = static_cast<std::uint8_t>((sums[k] + numSamples / 2) / numSamples);
      }
    }
  }
}

}  // namespace Qov::Tools
