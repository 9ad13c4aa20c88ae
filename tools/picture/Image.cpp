#include "picture/Image.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "Qov/Util/Raise.h"

namespace Qov::Tools {
namespace {

int CheckSide(std::uint32_t side) {
  if (side == 0 || side > kMostPixels) {
    Qov::Util::Raise("tools/picture/Image", Qov::Util::Exception::ErrorType::OutOfBounds,
                     "An image has 1 to " + std::to_string(kMostPixels) +
                         " pixels in each direction, not " + std::to_string(side));
  }
  return static_cast<int>(side);
}

Rectangle Intersect(const Rectangle& a, const Rectangle& b) {
  const int x = std::max(a.mX, b.mX);
  const int y = std::max(a.mY, b.mY);
  return {x, y, std::max(0, std::min(a.mX + a.mWidth, b.mX + b.mWidth) - x),
          std::max(0, std::min(a.mY + a.mHeight, b.mY + b.mHeight) - y)};
}

/// Returns the pixels from the lower to the greater coordinate, inside of 0 to `size`.
std::pair<int, int> PixelsBetween(double a, double b, double margin, int size) {
  const double first = std::clamp(std::floor(std::min(a, b) - margin), 0.0, double(size));
  const double last = std::clamp(std::ceil(std::max(a, b) + margin), 0.0, double(size));
  return {static_cast<int>(first), static_cast<int>(last)};
}

}  // namespace

Rectangle Rectangle::Shrink(int margin) const {
  return {mX + margin, mY + margin, std::max(0, mWidth - 2 * margin),
          std::max(0, mHeight - 2 * margin)};
}

Image::Image(std::uint32_t width, std::uint32_t height, Colour background)
    : mWidth(CheckSide(width)),
      mHeight(CheckSide(height)),
      mPixels(std::size_t{width} * height, background) {}

void Image::Blend(int x, int y, Colour colour, float opacity) {
  if (x < 0 || y < 0 || x >= mWidth || y >= mHeight) return;
  Colour& pixel = At(x, y);
  pixel = MixColours(pixel, colour, opacity);
}

void Image::Fill(const Rectangle& area, Colour colour, float opacity) {
  const Rectangle inside = Intersect(area, GetArea());
  for (int y = inside.mY; y < inside.mY + inside.mHeight; ++y) {
    for (int x = inside.mX; x < inside.mX + inside.mWidth; ++x) Blend(x, y, colour, opacity);
  }
}

void Image::Frame(const Rectangle& area, Colour colour) {
  Fill({area.mX, area.mY, area.mWidth, 1}, colour);
  Fill({area.mX, area.mY + area.mHeight - 1, area.mWidth, 1}, colour);
  Fill({area.mX, area.mY, 1, area.mHeight}, colour);
  Fill({area.mX + area.mWidth - 1, area.mY, 1, area.mHeight}, colour);
}

void Image::DrawLine(double x0, double y0, double x1, double y1, Colour colour, double width) {
  if (!std::isfinite(x0 + y0 + x1 + y1)) return;
  const double dx = x1 - x0;
  const double dy = y1 - y0;
  const double length = std::hypot(dx, dy);
  const double reach = width / 2 + 0.5;  // pixels farther away are not touched
  const auto [left, right] = PixelsBetween(x0, x1, reach, mWidth);
  const auto [top, bottom] = PixelsBetween(y0, y1, reach, mHeight);
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) {
      const double px = x + 0.5 - x0;
      const double py = y + 0.5 - y0;
      const double along =
          length > 0 ? std::clamp((px * dx + py * dy) / (length * length), 0.0, 1.0) : 0;
      const double distance = std::hypot(px - along * dx, py - along * dy);
      const double cover = std::clamp(reach - distance, 0.0, std::min(1.0, width));
      if (cover > 0) Blend(x, y, colour, static_cast<float>(cover));
    }
  }
}

void Image::Paste(const Image& image, int x, int y) {
  const Rectangle inside = Intersect({x, y, image.mWidth, image.mHeight}, GetArea());
  for (int row = inside.mY; row < inside.mY + inside.mHeight; ++row) {
    for (int column = inside.mX; column < inside.mX + inside.mWidth; ++column) {
      At(column, row) = image.At(column - x, row - y);
    }
  }
}

Colour MixColours(Colour first, Colour second, float share) {
  Colour mixed;
  for (std::size_t k = 0; k < 3; ++k) {
    const auto a = static_cast<float>(first[k]);
    const auto b = static_cast<float>(second[k]);
    mixed[k] = static_cast<std::uint8_t>(std::lround(a + (b - a) * share));
  }
  return mixed;
}

Colour InkFor(const Colour& background) {
  const int brightness = 299 * background[0] + 587 * background[1] + 114 * background[2];
  return brightness > 128 * 1000 ? Colour{0, 0, 0} : Colour{255, 255, 255};
}

}  // namespace Qov::Tools
