#include "picture/Legend.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "picture/Text.h"

namespace Qov::Tools {
namespace {

int BoxSize(double textSize) { return static_cast<int>(std::lround(textSize)); }
int BoxGap(double textSize) { return static_cast<int>(std::lround(textSize / 2)); }

/// Draws a ring with smooth edges.
void DrawRing(Image& image, double x, double y, double radius, double width, Colour colour) {
  const double reach = radius + width;
  for (int py = static_cast<int>(y - reach); py <= static_cast<int>(y + reach); ++py) {
    for (int px = static_cast<int>(x - reach); px <= static_cast<int>(x + reach); ++px) {
      const double distance = std::abs(std::hypot(px + 0.5 - x, py + 0.5 - y) - radius);
      const double cover = std::clamp(width / 2 + 0.5 - distance, 0.0, 1.0);
      image.Blend(px, py, colour, static_cast<float>(cover));
    }
  }
}

/// Draws a line from a place with a head at its end.
// NOLINTNEXTLINE(readability-function-size): places and their look
void DrawArrow(Image& image, double x, double y, double dx, double dy, Colour colour,
               double width) {
  const double length = std::hypot(dx, dy);
  image.DrawLine(x, y, x + dx, y + dy, colour, width);
  if (length < 2 * width) return;
  const double head = std::min(4 * width, length / 2);
  const double alongX = dx / length * head;
  const double alongY = dy / length * head;
  for (const double side : {-0.5, 0.5}) {
    image.DrawLine(x + dx, y + dy, x + dx - alongX + side * alongY, y + dy - alongY - side * alongX,
                   colour, width);
  }
}

}  // namespace

int LegendWidth(std::span<const LegendEntry> entries, double textSize, int most) {
  double widest = MeasureText("and 000 more", textSize);
  for (const LegendEntry& entry : entries) {
    widest = std::max(widest, MeasureText(entry.mName, textSize));
  }
  const int box = BoxSize(textSize) + BoxGap(textSize);
  return std::min(most, box + static_cast<int>(std::ceil(widest)));
}

void DrawLegend(Image& image, const Rectangle& area, std::span<const LegendEntry> entries,
                double textSize, Colour ink) {
  const int line = LineHeight(textSize) + BoxGap(textSize) / 2;
  const auto numLines = static_cast<std::size_t>(std::max(0, area.mHeight / line));
  if (numLines == 0) return;
  const bool fits = entries.size() <= numLines;
  const std::size_t numShown = fits ? entries.size() : numLines - 1;
  const int box = BoxSize(textSize);
  const int textX = area.mX + box + BoxGap(textSize);
  const int room = area.mX + area.mWidth - textX;
  int y = area.mY;
  for (const LegendEntry& entry : entries.first(numShown)) {
    const Rectangle square = {area.mX, y + (LineHeight(textSize) - box) / 2, box, box};
    image.Fill(square, entry.mColour);
    image.Frame(square, MixColours(entry.mColour, ink, 0.5F));
    DrawText(image, textX, y, CutText(entry.mName, textSize, room), textSize, ink);
    y += line;
  }
  if (fits) return;
  DrawText(image, textX, y, "and " + std::to_string(entries.size() - numShown) + " more", textSize,
           ink);
}

// NOLINTNEXTLINE(readability-function-size): places and their look
void DrawMarker(Image& image, double x, double y, std::string_view label, double textSize,
                Colour ink, Colour paper) {
  if (!(std::abs(x) < 1e6 && std::abs(y) < 1e6)) return;
  const double radius = 0.6 * textSize;
  const double arm = 1.2 * radius;
  for (const bool isHalo : {true, false}) {
    const Colour colour = isHalo ? paper : ink;
    const double width = isHalo ? 4.5 : 1.5;
    DrawRing(image, x, y, radius, width, colour);
    image.DrawLine(x - arm, y, x + arm, y, colour, width);
    image.DrawLine(x, y - arm, x, y + arm, colour, width);
  }
  if (label.empty()) return;
  const double width = MeasureText(label, textSize) + 6;
  const double right = x + arm + 4;
  const bool fits = right + width <= image.GetWidth() || x - arm - 4 - width < 0;
  DrawLabel(image, fits ? right : x - arm - 4 - width, y - LineHeight(textSize) / 2.0 - 3, label,
            textSize, ink, paper);
}

void DrawAxes(Image& image, const Rectangle& area, const Camera& camera, double textSize) {
  struct Axis {
    const char* mName;
    Triple mDirection;  ///< Right, up, toward the viewer.
    Colour mColour;
  };
  std::array<Axis, 3> axes = {{{"x", camera.Turn({1, 0, 0}), {214, 62, 62}},
                               {"y", camera.Turn({0, 1, 0}), {52, 158, 68}},
                               {"z", camera.Turn({0, 0, 1}), {64, 104, 220}}}};
  std::sort(axes.begin(), axes.end(),
            [](const Axis& a, const Axis& b) { return a.mDirection[2] < b.mDirection[2]; });
  const double x = area.mX + area.mWidth / 2.0;
  const double y = area.mY + area.mHeight / 2.0;
  const double text = LineHeight(textSize);
  const double length = std::max(4.0, std::min(area.mWidth, area.mHeight) / 2.0 - 0.7 * text);
  const double width = std::max(1.5, textSize / 7);
  for (const Axis& axis : axes) {
    const double dx = axis.mDirection[0] * length;
    const double dy = -axis.mDirection[1] * length;
    DrawArrow(image, x, y, dx, dy, axis.mColour, width);
    const double across = std::hypot(dx, dy);
    if (across < 0.2 * length) continue;  // along the view; its name would cover the others
    const double beyond = (across + 0.5 * textSize) / across;
    DrawText(image, x + dx * beyond, y + dy * beyond - text / 2, axis.mName, textSize, axis.mColour,
             Align::Centre);
  }
}

}  // namespace Qov::Tools
