#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "picture/Image.h"

namespace Qov::Tools {

/// A colour as 0xFFRRGGBB; 0 where nothing is.
using Sample = std::uint32_t;
Sample PackColour(Colour colour);

/// A corner of a triangle. The centre of the upper left sample is (0.5, 0.5).
struct ScreenCorner {
  double mX = 0;
  double mY = 0;
  float mDepth = 0;  ///< Above 0; greater is nearer.
  float mPlace = 0;  ///< On the palette; times the depth in perspective.
  float mShade = 1;  ///< Brightness, 0 to 1.
};

/// How triangles are coloured.
struct Paint {
  const Sample* mpPalette = nullptr;  ///< For colours by place; null for one colour.
  std::size_t mNumColours = 0;
  Sample mColour = 0;
  float mOpacity = 1;
  std::uint8_t mEdges = 0;  ///< Bits 0, 1, 2: the edge after this corner is drawn.
  float mEdgeStrength = 0;  ///< 0: not visible, 1: the colour of edges.
  bool mIsPerspective = false;
};

struct ScreenTriangle {
  std::array<ScreenCorner, 3> mCorners;
  Paint mPaint;
};

/// The samples of an image: colour and depth. Each pixel has `smoothing` samples in each direction.
class SampleBuffer {
 public:
  SampleBuffer(int width, int height, int smoothing);

  int GetWidth() const { return mWidth; }
  int GetHeight() const { return mHeight; }
  int GetSmoothing() const { return mSmoothing; }

  /// Draws an opaque triangle where it is nearer than what is there. Triangles that share an edge
  /// never cover a sample of it both and never leave one out.
  void Fill(const ScreenTriangle& triangle);
  /// Mixes a transparent triangle in where nothing opaque is nearer. `image` is the background.
  void Blend(const ScreenTriangle& triangle, const Image& image, const Rectangle& viewport);
  /// Draws a disc that faces the viewer.
  void FillDisc(const ScreenCorner& centre, double radius, Sample colour);
  /// Returns the depth of a sample; 0 where nothing is.
  float GetDepth(int x, int y) const { return mpSamples[Position(x, y)].mDepth; }
  /// Writes the means of the samples into the image, where anything is.
  void Resolve(Image& image, const Rectangle& viewport) const;

 private:
  struct DepthSample {
    float mDepth;
    Sample mColour;
  };
  /// Zeroed memory of the system, which provides a page when it is written first. Samples that
  /// nothing covers cost nothing.
  struct Unmap {
    std::size_t mSize = 0;
    void operator()(DepthSample* p) const;
  };
  // NOLINTNEXTLINE(modernize-avoid-c-arrays): the size is not constant
  using Samples = std::unique_ptr<DepthSample[], Unmap>;
  static Samples MapZeroed(std::size_t numSamples);

  /// Calls `startRow(x, y)` for each row of the triangle, and `visit(sample, x, y, i, depth)` for
  /// each of the row's samples that is nearer than what is there; `i` counts from `x`.
  template <class StartRow, class Visitor>
  void ForEachNearer(const ScreenTriangle& triangle, StartRow startRow, Visitor visit);
  std::size_t Position(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(mWidth) +
           static_cast<std::size_t>(x);
  }
  void MarkSpan(int y, int x0, int x1);
  /// Returns true if all samples of a pixel, from its first, have one colour.
  bool IsEven(const DepthSample* pFirst) const;
  /// Returns the mean of the samples of a pixel; those that nothing covers count as `below`.
  Colour MeanOf(const DepthSample* pFirst, Colour below) const;
  Colour PixelOf(const Image& image, const Rectangle& viewport, int x, int y) const;

  int mSmoothing;
  int mWidth;
  int mHeight;
  int mFirstRow;  ///< Of what has been drawn, like the next ones.
  int mEndRow = 0;
  int mFirstColumn;
  int mEndColumn = 0;
  Samples mpSamples;
};

}  // namespace Qov::Tools
