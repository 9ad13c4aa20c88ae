#include "picture/SampleBuffer.h"

#include <sys/mman.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

namespace Qov::Tools {
namespace {

/// Returns the first sample whose centre is at or after the coordinate, 0 to `size`.
int FirstSample(double coordinate, int size) {
  const double place = std::clamp(coordinate, 0.0, static_cast<double>(size)) - 0.5;
  const int whole = static_cast<int>(place);  // toward 0
  return whole + static_cast<int>(place > whole);
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

Colour Unpack(Sample sample) {
  return {static_cast<std::uint8_t>(sample >> 16U), static_cast<std::uint8_t>(sample >> 8U),
          static_cast<std::uint8_t>(sample)};
}

/// Returns a brightness, 0 to 1, as a factor for Darken.
inline Sample FactorOf(float shade) {
  return static_cast<Sample>(static_cast<int>(std::clamp(shade, 0.0F, 1.0F) * 256));
}

/// Multiplies the channels, two of them at once, by `factor` / 256.
inline Sample Darken(Sample colour, Sample factor) {
  const Sample redBlue = (colour & 0xFF00FFU) * factor >> 8U & 0xFF00FFU;
  const Sample green = (colour & 0x00FF00U) * factor >> 8U & 0x00FF00U;
  return 0xFF000000U | redBlue | green;
}

/// Computes the colours of a triangle's samples.
class Painter {
 public:
  Painter(const ScreenTriangle& triangle, float edgeWidth)
      : mPaint(triangle.mPaint),
        mPlanes(triangle),
        mEdgeReach(edgeWidth / 2),
        mFactor(FactorOf(triangle.mCorners[0].mShade)) {
    const auto& c = triangle.mCorners;
    mIsFlat = c[0].mShade == c[1].mShade && c[1].mShade == c[2].mShade;
    if (!mIsFlat) mShade = mPlanes.Through(c[0].mShade, c[1].mShade, c[2].mShade);
    mPlace = mPlanes.Through(c[0].mPlace, c[1].mPlace, c[2].mPlace);
    mHasEdges = mPaint.mEdges != 0 && mPaint.mEdgeStrength > 0;
    if (!mHasEdges) return;
    mEdgeFactor = FactorOf(1 - kEdgeDarkness * mPaint.mEdgeStrength);
    for (std::size_t i = 0; i < 3; ++i) mDistances[i] = mPlanes.DistanceFrom(i, mPaint.mEdges);
  }

  void StartRow(double x, double y) {
    const double px = mPlanes.X(x);
    const double py = mPlanes.Y(y);
    if (mPaint.mpPalette != nullptr) mPlaceRamp = Ramp(mPlace, px, py);
    if (!mIsFlat) mShadeRamp = Ramp(mShade, px, py);
    if (!mHasEdges) return;
    for (std::size_t i = 0; i < 3; ++i) mDistanceRamps[i] = Ramp(mDistances[i], px, py);
  }

  Sample ColourAt(int i, float depth) const {
    Sample factor = mIsFlat ? mFactor : FactorOf(mShadeRamp.At(i));
    if (mHasEdges && IsOnEdge(i)) factor = factor * mEdgeFactor >> 8U;
    return Darken(mPaint.mpPalette != nullptr ? ColourAtPlace(i, depth) : mPaint.mColour, factor);
  }

 private:
  static constexpr float kEdgeDarkness = 0.7F;

  Sample ColourAtPlace(int i, float depth) const {
    const float place = mPlaceRamp.At(i) / (mPaint.mIsPerspective ? depth : 1);
    const auto last = static_cast<float>(mPaint.mNumColours - 1);
    return mPaint.mpPalette[static_cast<std::size_t>(std::clamp(place, 0.0F, last))];
  }
  bool IsOnEdge(int i) const {
    return std::min({mDistanceRamps[0].At(i), mDistanceRamps[1].At(i), mDistanceRamps[2].At(i)}) <
           mEdgeReach;
  }

  const Paint& mPaint;
  const Planes mPlanes;
  float mEdgeReach;
  Sample mFactor;
  bool mHasEdges = false;
  bool mIsFlat = false;  ///< The brightness is the same everywhere.
  Sample mEdgeFactor = 0;
  Plane mShade, mPlace;
  std::array<Plane, 3> mDistances;
  Ramp mShadeRamp, mPlaceRamp;
  std::array<Ramp, 3> mDistanceRamps;
};

/// Calls `visit(y, x0, x1)` for the samples x0 to x1 of each row that the triangle covers.
template <class Visitor>
void ForEachSpan(const ScreenTriangle& triangle, int width, int height, Visitor visit) {
  const ScreenCorner* pFirst = triangle.mCorners.data();
  std::array<const ScreenCorner*, 3> c = {pFirst, pFirst + 1, pFirst + 2};  // the highest first
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

Sample PackColour(Colour colour) {
  return 0xFF000000U | static_cast<Sample>(colour[0]) << 16U |
         static_cast<Sample>(colour[1]) << 8U | colour[2];
}

SampleBuffer::SampleBuffer(int width, int height, int smoothing)
    : mSmoothing(smoothing),
      mWidth(width * smoothing),
      mHeight(height * smoothing),
      mFirstRow(mHeight),
      mFirstColumn(mWidth),
      mpSamples(MapZeroed(static_cast<std::size_t>(mWidth) * static_cast<std::size_t>(mHeight))) {}

void SampleBuffer::Unmap::operator()(DepthSample* p) const { munmap(p, mSize); }

SampleBuffer::Samples SampleBuffer::MapZeroed(std::size_t numSamples) {
  const std::size_t size = std::max<std::size_t>(numSamples, 1) * sizeof(DepthSample);
  void* p = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (p == MAP_FAILED) throw std::bad_alloc();
  madvise(p, size, MADV_HUGEPAGE);  // fewer page faults; without it everything works, too
  return Samples(static_cast<DepthSample*>(p), Unmap{size});
}

void SampleBuffer::MarkSpan(int y, int x0, int x1) {
  mFirstRow = std::min(mFirstRow, y);
  mEndRow = std::max(mEndRow, y + 1);
  mFirstColumn = std::min(mFirstColumn, x0);
  mEndColumn = std::max(mEndColumn, x1);
}

template <class StartRow, class Visitor>
void SampleBuffer::ForEachNearer(const ScreenTriangle& triangle, StartRow startRow, Visitor visit) {
  const auto& c = triangle.mCorners;
  const Planes planes(triangle);
  const Plane depths = planes.Through(c[0].mDepth, c[1].mDepth, c[2].mDepth);
  ForEachSpan(triangle, mWidth, mHeight, [&](int y, int x0, int x1) {
    const Ramp ramp(depths, planes.X(x0 + 0.5), planes.Y(y + 0.5));
    startRow(x0 + 0.5, y + 0.5);
    DepthSample* pSamples = &mpSamples[Position(x0, y)];
    for (int i = 0; i < x1 - x0; ++i) {
      const float depth = ramp.At(i);
      if (depth > pSamples[i].mDepth) visit(pSamples[i], x0, y, i, depth);
    }
    MarkSpan(y, x0, x1);
  });
}

void SampleBuffer::Fill(const ScreenTriangle& triangle) {
  const auto& c = triangle.mCorners;
  const Paint& paint = triangle.mPaint;
  const bool isPlain = paint.mpPalette == nullptr && paint.mEdges == 0 &&
                       c[0].mShade == c[1].mShade && c[1].mShade == c[2].mShade;
  if (isPlain) {
    const Sample colour = Darken(paint.mColour, FactorOf(c[0].mShade));
    ForEachNearer(
        triangle, [](double, double) {},
        [=](DepthSample& sample, int, int, int, float depth) {
          sample = {depth, colour};
        });
    return;
  }
  Painter painter(triangle, static_cast<float>(mSmoothing));
  ForEachNearer(
      triangle, [&](double x, double y) { painter.StartRow(x, y); },
      [&](DepthSample& sample, int, int, int i, float depth) {
        sample = {depth, painter.ColourAt(i, depth)};
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
  Painter painter(triangle, static_cast<float>(mSmoothing));
  ForEachNearer(
      triangle, [&](double x, double y) { painter.StartRow(x, y); },
      [&](DepthSample& sample, int x, int y, int i, float depth) {
        const Colour below =
            sample.mColour != 0 ? Unpack(sample.mColour) : PixelOf(image, viewport, x + i, y);
        const Colour colour = Unpack(painter.ColourAt(i, depth));
        sample.mColour = PackColour(MixColours(below, colour, triangle.mPaint.mOpacity));
      });
}

void SampleBuffer::FillDisc(const ScreenCorner& centre, double radius, Sample colour) {
  const int first = FirstSample(centre.mY - radius, mHeight);
  const int end = FirstSample(centre.mY + radius, mHeight);
  for (int y = first; y < end; ++y) {
    const double offset = y + 0.5 - centre.mY;
    const double half = std::sqrt(std::max(0.0, radius * radius - offset * offset));
    const int x0 = FirstSample(centre.mX - half, mWidth);
    const int x1 = FirstSample(centre.mX + half, mWidth);
    for (int x = x0; x < x1; ++x) {
      DepthSample& sample = mpSamples[Position(x, y)];
      if (centre.mDepth > sample.mDepth)
        sample = {centre.mDepth, Darken(colour, FactorOf(centre.mShade))};
    }
    MarkSpan(y, x0, x1);
  }
}

Colour SampleBuffer::MeanOf(const DepthSample* pFirst, Colour below) const {
  const Sample background = PackColour(below);
  Sample redBlue = 0;  // sums of two channels at once
  Sample green = 0;
  for (int y = 0; y < mSmoothing; ++y) {
    for (int x = 0; x < mSmoothing; ++x) {
      const Sample colour = pFirst[y * mWidth + x].mColour;
      const Sample sample = colour != 0 ? colour : background;
      redBlue += sample & 0xFF00FFU;
      green += sample >> 8U & 0xFFU;
    }
  }
  const auto numSamples = static_cast<Sample>(mSmoothing * mSmoothing);
  const auto mean = [=](Sample sum) {
    return static_cast<std::uint8_t>((sum + numSamples / 2) / numSamples);
  };
  return {mean(redBlue >> 16U), mean(green), mean(redBlue & 0xFFFFU)};
}

bool SampleBuffer::IsEven(const DepthSample* pFirst) const {
  const Sample first = pFirst->mColour;
  for (int y = 0; y < mSmoothing; ++y) {
    for (int x = 0; x < mSmoothing; ++x) {
      if (pFirst[y * mWidth + x].mColour != first) return false;
    }
  }
  return true;
}

void SampleBuffer::Resolve(Image& image, const Rectangle& viewport) const {
  const auto endPixel = [&](int sample) { return (sample + mSmoothing - 1) / mSmoothing; };
  const int firstX = std::max(mFirstColumn / mSmoothing, -viewport.mX);
  const int endX = std::min(endPixel(mEndColumn), image.GetWidth() - viewport.mX);
  const int firstY = std::max(mFirstRow / mSmoothing, -viewport.mY);
  const int endY = std::min(endPixel(mEndRow), image.GetHeight() - viewport.mY);
  for (int y = firstY; y < endY; ++y) {
    for (int x = firstX; x < endX; ++x) {
      Colour& pixel = image.At(viewport.mX + x, viewport.mY + y);
      const DepthSample* pFirst = &mpSamples[Position(x * mSmoothing, y * mSmoothing)];
      if (!IsEven(pFirst)) {
        pixel = MeanOf(pFirst, pixel);
      } else if (pFirst->mColour != 0) {
        pixel = Unpack(pFirst->mColour);
      }
    }
  }
}

}  // namespace Qov::Tools
