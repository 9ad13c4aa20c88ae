#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "picture/Image.h"

namespace Qov::Tools {

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
  const Colour* mpPalette = nullptr;  ///< For colours by place; null for one colour.
  std::size_t mNumColours = 0;
  Colour mColour{};
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
  void FillDisc(const ScreenCorner& centre, double radius, Colour colour);
  /// Returns the depth of a sample; 0 where nothing is.
  float GetDepth(int x, int y) const { return mpDepths[Position(x, y)]; }
  /// Writes the means of the samples into the image, where anything is.
  void Resolve(Image& image, const Rectangle& viewport) const;

 private:
  /// A colour of which the highest byte is 255; 0 if nothing is there.
  using Sample = std::uint32_t;
  struct Free {
    void operator()(void* p) const { std::free(p); }
  };
  template <class T>
  using Array = std::unique_ptr<T[], Free>;
  std::size_t Position(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(mWidth) +
           static_cast<std::size_t>(x);
  }
  void MarkRows(int first, int end);
  static Sample Pack(Colour colour);
  static Colour Unpack(Sample sample);
  Colour PixelOf(const Image& image, const Rectangle& viewport, int x, int y) const;

  int mSmoothing;
  int mWidth;
  int mHeight;
  int mFirstRow;  ///< Of what has been drawn.
  int mEndRow = 0;
  Array<float> mpDepths;
  Array<Sample> mpSamples;
};

}  // namespace Qov::Tools
