#include "picture/ScalarBar.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <vector>

#include "picture/Text.h"
#include "picture/Ticks.h"

namespace Qov::Tools {
namespace {

constexpr std::string_view kNoValue = "no value";
constexpr std::size_t kMostTicks = 10;

/// Sizes in pixels that depend on the size of the text.
struct Measures {
  explicit Measures(double textSize)
      : mLine(LineHeight(textSize)),
        mBar(static_cast<int>(std::lround(1.6 * textSize))),
        mTick(std::max(3, static_cast<int>(textSize / 3))),
        mMostTitle(static_cast<int>(14 * textSize)) {}

  int mLine;
  int mBar;
  int mTick;
  int mMostTitle;
};

/// A value at the side of the bar.
struct Mark {
  double mValue = 0;
  std::string mText;
};

/// Returns the ticks, without those that `gap`, in values, makes too near to an end of the range.
std::vector<Mark> MakeMarks(const ColourScale& scale, std::size_t mostTicks, double gap) {
  if (!scale.HasRange()) return {};
  const double low = scale.GetLow();
  const double high = scale.GetHigh();
  if (low == high) return {{low, ShortNumber(low)}};
  std::vector<Mark> marks = {{low, ShortNumber(low)}, {high, ShortNumber(high)}};
  const std::vector<double> ticks = MakeTicks(low, high, mostTicks);
  const std::vector<std::string> texts = FormatTicks(ticks);
  for (std::size_t i = 0; i < ticks.size(); ++i) {
    if (ticks[i] - low >= gap && high - ticks[i] >= gap) marks.push_back({ticks[i], texts[i]});
  }
  return marks;
}

std::vector<std::string> TitleLines(const ScalarBar& bar, double textSize, int width) {
  const std::string unit = bar.mUnit.empty() ? "" : "[" + bar.mUnit + "]";
  if (unit.empty() || bar.mTitle.empty()) return {CutText(bar.mTitle + unit, textSize, width)};
  const std::string line = bar.mTitle + " " + unit;
  if (MeasureText(line, textSize) <= width) return {line};
  return {CutText(bar.mTitle, textSize, width), CutText(unit, textSize, width)};
}

/// Draws the colours, the highest at the top.
void DrawColours(Image& image, const Rectangle& area, const ColourScale& scale, Colour ink) {
  const auto numColours = static_cast<double>(scale.GetPalette().size());
  for (int y = 0; y < area.mHeight; ++y) {
    const double share = scale.GetLow() == scale.GetHigh() ? 0.5 : 1 - (y + 0.5) / area.mHeight;
    image.Fill({area.mX, area.mY + y, area.mWidth, 1},
               scale.ColourAt(static_cast<float>(share * numColours)));
  }
  image.Frame(area, ink);
}

void DrawNoValue(Image& image, int x, int y, const Measures& measures, double textSize,
                 Colour ink) {
  const Rectangle box = {x, y + measures.mLine / 8, measures.mBar, measures.mLine * 3 / 4};
  image.Fill(box, kNoValueColour);
  image.Frame(box, ink);
  DrawText(image, x + measures.mBar + 2 * measures.mTick, y, kNoValue, textSize, ink);
}

}  // namespace

int ScalarBarWidth(const ScalarBar& bar, const ColourScale& scale, double textSize) {
  const Measures measures(textSize);
  double text = bar.mNoValues || !scale.HasRange() ? MeasureText(kNoValue, textSize) : 0;
  for (const Mark& mark : MakeMarks(scale, kMostTicks, 0)) {
    text = std::max(text, MeasureText(mark.mText, textSize));
  }
  double title = 0;
  for (const std::string& line : TitleLines(bar, textSize, measures.mMostTitle)) {
    title = std::max(title, MeasureText(line, textSize));
  }
  const double beside = measures.mBar + 2 * measures.mTick + text;
  return static_cast<int>(std::ceil(std::max(beside, title)));
}

void DrawScalarBar(Image& image, const Rectangle& area, const ScalarBar& bar,
                   const ColourScale& scale, double textSize, Colour ink) {
  const Measures measures(textSize);
  int y = area.mY;
  for (const std::string& line : TitleLines(bar, textSize, area.mWidth)) {
    DrawText(image, area.mX, y, line, textSize, ink);
    y += measures.mLine;
  }
  int bottom = area.mY + area.mHeight;
  if (bar.mNoValues || !scale.HasRange()) {
    bottom -= measures.mLine;
    DrawNoValue(image, area.mX, bottom, measures, textSize, ink);
  }
  // Half a line is needed above and below for the texts at the ends.
  const Rectangle colours = {area.mX, y + measures.mLine, measures.mBar,
                             bottom - y - 2 * measures.mLine};
  if (!scale.HasRange() || colours.mHeight < measures.mLine) return;
  DrawColours(image, colours, scale, ink);
  const double size = scale.GetHigh() - scale.GetLow();
  const auto lines = static_cast<std::size_t>(colours.mHeight / measures.mLine);
  const std::size_t mostTicks = std::clamp<std::size_t>(lines / 2, 1, kMostTicks);
  const double gap = size * 1.1 * measures.mLine / colours.mHeight;
  for (const Mark& mark : MakeMarks(scale, mostTicks, gap)) {
    const double share = size > 0 ? (mark.mValue - scale.GetLow()) / size : 0.5;
    const double at = colours.mY + (1 - share) * (colours.mHeight - 1);
    const int right = colours.mX + colours.mWidth;
    image.Fill({right, static_cast<int>(std::lround(at)), measures.mTick, 1}, ink);
    DrawText(image, right + 2 * measures.mTick, std::round(at) - measures.mLine / 2.0, mark.mText,
             textSize, ink);
  }
}

}  // namespace Qov::Tools
