#pragma once

#include <cstdint>
#include <span>

namespace Qov::Tools {

/// A line or a quadratic curve of an outline, in units of the font; y points up. Outlines are
/// closed.
struct GlyphSegment {
  std::int16_t mX0, mY0;  ///< The start.
  std::int16_t mX1, mY1;  ///< The control point of a curve.
  std::int16_t mX2, mY2;  ///< The end.
  bool mIsCurve;
};

struct Glyph {
  std::uint32_t mCharacter;  ///< Unicode.
  std::int16_t mAdvance;     ///< From its origin to that of the next.
  std::uint32_t mFirstSegment;
  std::uint32_t mNumSegments;
};

/// A font without hints. The source of `kFont` is generated at build time by MakeFont.cpp.
struct Font {
  int mUnits;                      ///< Units in the height of the font.
  int mAscender;                   ///< The highest y of usual glyphs.
  int mDescender;                  ///< The lowest y; below 0.
  std::span<const Glyph> mGlyphs;  ///< By character, ascending.
  std::span<const GlyphSegment> mSegments;
};

/// DejaVu Sans.
extern const Font kFont;

}  // namespace Qov::Tools
