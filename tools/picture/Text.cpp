#include "picture/Text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include "picture/font/Font.h"

namespace Qov::Tools {
namespace {

constexpr std::uint32_t kNoCharacter = 0xFFFFFFFF;
constexpr std::string_view kEllipsis = "\u2026";
constexpr int kCurveSteps = 4;

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80; }

/// Removes the first character of a text and returns it; kNoCharacter for a byte that is not UTF-8.
std::uint32_t TakeCharacter(std::string_view& text) {
  const auto first = static_cast<unsigned char>(text.front());
  const std::size_t length = first < 0x80   ? 1
                             : first < 0xC2 ? 0
                             : first < 0xE0 ? 2
                             : first < 0xF0 ? 3
                             : first < 0xF5 ? 4
                                            : 0;
  const bool isWhole =
      length != 0 && length <= text.size() &&
      std::all_of(text.begin() + 1, text.begin() + static_cast<int>(length), IsContinuation);
  if (!isWhole) {
    text.remove_prefix(1);
    return kNoCharacter;
  }
  std::uint32_t character = length == 1 ? first : first & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    character = character << 6U | (static_cast<unsigned char>(text[i]) & 0x3FU);
  }
  text.remove_prefix(length);
  return character;
}

/// Returns null for characters that the font lacks.
const Glyph* FindGlyph(std::uint32_t character) {
  const auto glyph =
      std::lower_bound(kFont.mGlyphs.begin(), kFont.mGlyphs.end(), character,
                       [](const Glyph& g, std::uint32_t c) { return g.mCharacter < c; });
  return glyph != kFont.mGlyphs.end() && glyph->mCharacter == character ? &*glyph : nullptr;
}

// The box of unknown characters, in units of DejaVu Sans: the outer side, and the inner side in the
// other direction.
constexpr std::int16_t kBoxAdvance = 1229;
constexpr std::array<GlyphSegment, 8> kBox = {{{200, 0, 0, 0, 200, 1400, false},
                                               {200, 1400, 0, 0, 1030, 1400, false},
                                               {1030, 1400, 0, 0, 1030, 0, false},
                                               {1030, 0, 0, 0, 200, 0, false},
                                               {320, 120, 0, 0, 910, 120, false},
                                               {910, 120, 0, 0, 910, 1280, false},
                                               {910, 1280, 0, 0, 320, 1280, false},
                                               {320, 1280, 0, 0, 320, 120, false}}};

int AdvanceOf(const Glyph* pGlyph) { return pGlyph != nullptr ? pGlyph->mAdvance : kBoxAdvance; }

std::span<const GlyphSegment> SegmentsOf(const Glyph* pGlyph) {
  return pGlyph != nullptr ? kFont.mSegments.subspan(pGlyph->mFirstSegment, pGlyph->mNumSegments)
                           : std::span<const GlyphSegment>(kBox);
}

/// The share of each pixel of a small area that an outline covers. Each line adds its signed height
/// to the pixels that it crosses; the sum of a row up to a pixel is the cover of that pixel.
class Coverage {
 public:
  Coverage(int width, int height)
      : mWidth(width), mHeight(height), mCells(Cell(0, height) + std::size_t{2}) {}

  /// Both ends have to be inside of the area.
  void AddLine(double x0, double y0, double x1, double y1) {
    if (y0 == y1) return;
    const double direction = y0 < y1 ? 1 : -1;
    if (y0 > y1) {
      std::swap(x0, x1);
      std::swap(y0, y1);
    }
    const double slope = (x1 - x0) / (y1 - y0);
    for (int y = static_cast<int>(y0); y < mHeight && y < y1; ++y) {
      const double top = std::max<double>(y, y0);
      const double bottom = std::min<double>(y + 1, y1);
      AddToRow(y, x0 + (top - y0) * slope, x0 + (bottom - y0) * slope, direction * (bottom - top));
    }
  }

  /// Calls `visit(x, y, cover)` for each pixel that is covered.
  template <class Visitor>
  void ForEachPixel(Visitor visit) const {
    for (int y = 0; y < mHeight; ++y) {
      double sum = 0;
      for (int x = 0; x < mWidth; ++x) {
        sum += mCells[Cell(x, y)];
        const double cover = std::min(1.0, std::abs(sum));
        if (cover > 1.0 / 512) visit(x, y, static_cast<float>(cover));
      }
    }
  }

 private:
  std::size_t Cell(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(mWidth) +
           static_cast<std::size_t>(x);
  }

  /// Adds the part of a line in one row, from `a` to `b`; `height` has the sign of its direction.
  void AddToRow(int y, double a, double b, double height) {
    const double left = std::min(a, b);
    const double right = std::max(a, b);
    double done = 0;  // share of the line to the left of the pixel
    double covered = 0;
    for (int x = static_cast<int>(left); x < mWidth; ++x) {
      const double from = std::max<double>(left, x);
      const double to = std::min<double>(right, x + 1);
      const double share = right > left ? (to - from) / (right - left) : 1;
      // The area to the right of the line, inside of the pixel.
      const double area = done + share * (x + 1 - (from + to) / 2);
      mCells[Cell(x, y)] += height * (area - covered);
      covered = area;
      done += share;
      if (to >= right) {
        mCells[Cell(x + 1, y)] += height * (1 - covered);
        return;
      }
    }
  }

  int mWidth;
  int mHeight;
  std::vector<double> mCells;
};

double ClampSize(double size) { return std::clamp(size, 4.0, 400.0); }
double ScaleOf(double size) { return ClampSize(size) / kFont.mUnits; }

/// Draws a glyph whose origin is at `x` on the base line `y`.
void DrawGlyph(Image& image, const Glyph* pGlyph, double x, int baseLine, double scale,
               Colour colour) {
  const auto segments = SegmentsOf(pGlyph);
  double left = 0;
  double right = 0;
  double top = 0;
  double bottom = 0;
  for (const GlyphSegment& s : segments) {
    for (const double px : {s.mX0, s.mIsCurve ? s.mX1 : s.mX0, s.mX2}) {
      left = std::min(left, px * scale);
      right = std::max(right, px * scale);
    }
    for (const double py : {s.mY0, s.mIsCurve ? s.mY1 : s.mY0, s.mY2}) {
      top = std::max(top, py * scale);
      bottom = std::min(bottom, py * scale);
    }
  }
  const int originX = static_cast<int>(std::floor(x + left));
  const int originY = baseLine - static_cast<int>(std::ceil(top));
  Coverage coverage(static_cast<int>(std::ceil(x + right)) - originX + 2,
                    static_cast<int>(std::ceil(top) + std::ceil(-bottom)) + 1);
  const auto toX = [&](double px) { return x + px * scale - originX; };
  const auto toY = [&](double py) { return baseLine - py * scale - originY; };
  for (const GlyphSegment& s : segments) {
    double fromX = s.mX0;
    double fromY = s.mY0;
    const int steps = s.mIsCurve ? kCurveSteps : 1;
    for (int i = 1; i <= steps; ++i) {
      const double t = static_cast<double>(i) / steps;
      const double u = 1 - t;
      const double px = s.mIsCurve ? u * u * s.mX0 + 2 * u * t * s.mX1 + t * t * s.mX2 : s.mX2;
      const double py = s.mIsCurve ? u * u * s.mY0 + 2 * u * t * s.mY1 + t * t * s.mY2 : s.mY2;
      coverage.AddLine(toX(fromX), toY(fromY), toX(px), toY(py));
      fromX = px;
      fromY = py;
    }
  }
  coverage.ForEachPixel(
      [&](int px, int py, float cover) { image.Blend(originX + px, originY + py, colour, cover); });
}

}  // namespace

double MeasureText(std::string_view text, double size) {
  double units = 0;
  while (!text.empty()) units += AdvanceOf(FindGlyph(TakeCharacter(text)));
  return units * ScaleOf(size);
}

int LineHeight(double size) {
  return static_cast<int>(std::ceil((kFont.mAscender - kFont.mDescender) * ScaleOf(size)));
}

void DrawText(Image& image, double x, double y, std::string_view text, double size, Colour colour,
              Align align) {
  const double scale = ScaleOf(size);
  const double width = align == Align::Left ? 0 : MeasureText(text, size);
  double at = x - (align == Align::Right ? width : width / 2);
  const double reach = 1e6;  // positions are numbers of pixels
  if (!(std::abs(at) < reach && std::abs(y) < reach)) return;
  const int baseLine = static_cast<int>(std::lround(y + kFont.mAscender * scale));
  while (!text.empty() && at < image.GetWidth()) {
    const Glyph* pGlyph = FindGlyph(TakeCharacter(text));
    const double advance = AdvanceOf(pGlyph) * scale;
    if (at + 2 * advance > 0) DrawGlyph(image, pGlyph, at, baseLine, scale, colour);
    at += advance;
  }
}

std::string CutText(std::string_view text, double size, double width) {
  if (MeasureText(text, size) <= width) return std::string(text);
  double room = width - MeasureText(kEllipsis, size);
  std::string_view rest = text;
  std::size_t length = 0;
  while (!rest.empty()) {
    room -= AdvanceOf(FindGlyph(TakeCharacter(rest))) * ScaleOf(size);
    if (room < 0) break;
    length = text.size() - rest.size();
  }
  return std::string(text.substr(0, length)).append(kEllipsis);
}

void DrawLabel(Image& image, double x, double y, std::string_view text, double size, Colour ink,
               Colour paper) {
  constexpr int kPadding = 3;
  const int width = static_cast<int>(std::ceil(MeasureText(text, size))) + 2 * kPadding;
  const int height = LineHeight(size) + 2 * kPadding;
  const auto inside = [](double place, int length, int room) {
    return static_cast<int>(
        std::clamp(place, 0.0, static_cast<double>(std::max(0, room - length))));
  };
  const Rectangle area = {inside(x, width, image.GetWidth()), inside(y, height, image.GetHeight()),
                          width, height};
  image.Fill(area, paper, 0.85F);
  image.Frame(area, MixColours(paper, ink, 0.5F));
  DrawText(image, area.mX + kPadding, area.mY + kPadding, text, size, ink);
}

}  // namespace Qov::Tools
