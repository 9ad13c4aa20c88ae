#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Palette.h"

namespace Qov::Tools {

/// Greatest width and height of an image, in pixels.
inline constexpr std::uint32_t kMostPixels = 16384;

/// Pixels of an image: `mX`, `mY` is the upper left corner. May be partly or wholly outside of the
/// image.
struct Rectangle {
  int mX = 0;
  int mY = 0;
  int mWidth = 0;
  int mHeight = 0;

  /// Returns the rectangle without `margin` pixels at each side; its size is at least 0.
  Rectangle Shrink(int margin) const;
  friend bool operator==(const Rectangle&, const Rectangle&) = default;
};

/// Red, green and blue of each pixel, row by row from the top.
class Image {
 public:
  /// Raises OutOfBounds if a side is 0 or greater than kMostPixels.
  Image(std::uint32_t width, std::uint32_t height, Colour background);

  int GetWidth() const { return mWidth; }
  int GetHeight() const { return mHeight; }
  Rectangle GetArea() const { return {0, 0, mWidth, mHeight}; }
  Colour& At(int x, int y) { return mPixels[Position(x, y)]; }
  const Colour& At(int x, int y) const { return mPixels[Position(x, y)]; }
  const std::vector<Colour>& GetPixels() const { return mPixels; }

  /// Mixes a colour into a pixel; `opacity` is 0 to 1. Does nothing outside of the image.
  void Blend(int x, int y, Colour colour, float opacity);
  void Fill(const Rectangle& area, Colour colour, float opacity = 1);
  /// Draws the border of an area, one pixel wide, inside of it.
  void Frame(const Rectangle& area, Colour colour);
  /// Draws a line with smooth edges; the centre of the upper left pixel is (0.5, 0.5).
  void DrawLine(double x0, double y0, double x1, double y1, Colour colour, double width = 1);
  /// Copies an image; `x`, `y` is the place of its upper left corner.
  void Paste(const Image& image, int x, int y);

 private:
  std::size_t Position(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(mWidth) +
           static_cast<std::size_t>(x);
  }

  int mWidth;
  int mHeight;
  std::vector<Colour> mPixels;
};

/// Returns the colour between two colours: `first` for 0, `second` for 1.
Colour MixColours(Colour first, Colour second, float share);

/// Returns black or white, whichever can be read better on the background.
Colour InkFor(const Colour& background);

}  // namespace Qov::Tools
