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

/// Returns the number of bytes of a character by its first byte; 0 if none begins with it.
std::size_t LengthOf(unsigned char first) {
  if (first < 0x80) return 1;
  if (first < 0xC2) return 0;
  if (first < 0xE0) return 2;
  if (first < 0xF0) return 3;
  return first < 0xF5 ? 4 : 0;
}

/// Removes the first character of a text and returns it; kNoCharacter for a byte that is not UTF-8.
std::uint32_t TakeCharacter(std::string_view& text) {
  const auto first = static_cast<unsigned char>(text.front());
  const std::size_t length = LengthOf(first);
  const std::string_view bytes = text.substr(0, std::max<std::size_t>(length, 1));
  text.remove_prefix(bytes.size());
  const std::string_view further = bytes.substr(1);
  if (length != bytes.size() || !std::all_of(further.begin(), further.end(), IsContinuation)) {
    text = {further.data(), further.size() + text.size()};
    return kNoCharacter;
  }
  std::uint32_t character = length == 1 ? first : first & (0x7FU >> length);
  for (const char c : further) {
    character = character << 6U | (static_cast<unsigned char>(c) & 0x3FU);
  }
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

struct Place {
  double mX = 0;
  double mY = 0;
};

/// Returns a place of a segment: 0 is its start, 1 its end.
Place PlaceOn(const GlyphSegment& s, double share) {
  if (!s.mIsCurve) return {s.mX0 + (s.mX2 - s.mX0) * share, s.mY0 + (s.mY2 - s.mY0) * share};
  const double rest = 1 - share;
  const auto at = [=](double p0, double p1, double p2) {
    return rest * rest * p0 + 2 * rest * share * p1 + share * share * p2;
  };
  return {at(s.mX0, s.mX1, s.mX2), at(s.mY0, s.mY1, s.mY2)};
}

/// The extent of an outline, with its origin, in units of the font.
struct Extent {
  explicit Extent(std::span<const GlyphSegment> segments) {
    for (const GlyphSegment& s : segments) {
      Include(s.mX0, s.mY0);
      Include(s.mX2, s.mY2);
      if (s.mIsCurve) Include(s.mX1, s.mY1);
    }
  }
  void Include(int x, int y) {
    mLeft = std::min(mLeft, x);
    mRight = std::max(mRight, x);
    mBottom = std::min(mBottom, y);
    mTop = std::max(mTop, y);
  }

  int mLeft = 0;
  int mRight = 0;
  int mBottom = 0;
  int mTop = 0;
};

/// Draws a glyph whose origin is at `x` on the base line `y`.
void DrawGlyph(Image& image, const Glyph* pGlyph, double x, int y, double scale, Colour colour) {
  const auto segments = SegmentsOf(pGlyph);
  const Extent extent(segments);
  const int left = static_cast<int>(std::floor(x + extent.mLeft * scale));
  const int right = static_cast<int>(std::ceil(x + extent.mRight * scale)) + 2;
  const int top = y - static_cast<int>(std::ceil(extent.mTop * scale));
  const int bottom = y + static_cast<int>(std::ceil(-extent.mBottom * scale)) + 1;
  Coverage coverage(right - left, bottom - top);
  for (const GlyphSegment& segment : segments) {
    const int steps = segment.mIsCurve ? kCurveSteps : 1;
    Place from = PlaceOn(segment, 0);
    for (int i = 1; i <= steps; ++i) {
      const Place to = PlaceOn(segment, static_cast<double>(i) / steps);
      coverage.AddLine(x + from.mX * scale - left, y - from.mY * scale - top,
                       x + to.mX * scale - left, y - to.mY * scale - top);
      from = to;
    }
  }
  coverage.ForEachPixel(
      [&](int px, int py, float cover) { image.Blend(left + px, top + py, colour, cover); });
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

// NOLINTNEXTLINE(readability-function-size): a place, a text and its look
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

// NOLINTNEXTLINE(readability-function-size): a place, a text and its look
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
