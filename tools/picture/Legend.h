#pragma once

#include <span>
#include <string>
#include <string_view>

#include "picture/Camera.h"
#include "picture/Image.h"

/// What explains a picture, besides the scalar bar.
namespace Qov::Tools {

struct LegendEntry {
  std::string mName;
  Colour mColour{};
};

/// Returns the width in pixels that the legend needs, at most `most`.
int LegendWidth(std::span<const LegendEntry> entries, double textSize, int most);

/// Draws a colour and a name on each line. Names are cut to the width; entries that do not fit
/// become "and N more".
void DrawLegend(Image& image, const Rectangle& area, std::span<const LegendEntry> entries,
                double textSize, Colour ink);

/// Draws a cross in a circle at a place, with a label beside it, inside of the image.
void DrawMarker(Image& image, double x, double y, std::string_view label, double textSize,
                Colour ink, Colour paper);

/// Draws the directions of x, y and z as arrows in a square area.
void DrawAxes(Image& image, const Rectangle& area, const Camera& camera, double textSize);

}  // namespace Qov::Tools
