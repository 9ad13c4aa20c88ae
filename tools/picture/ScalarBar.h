#pragma once

#include <string>

#include "picture/ColourScale.h"
#include "picture/Image.h"

namespace Qov::Tools {

/// The texts of a scalar bar.
struct ScalarBar {
  std::string mTitle;      ///< Such as "Stress, magnitude".
  std::string mUnit;       ///< Shown after the title; may be empty.
  bool mNoValues = false;  ///< Explains the colour of no value.
};

/// Returns the width in pixels that the bar needs with this size of text.
int ScalarBarWidth(const ScalarBar& bar, const ColourScale& scale, double textSize);

/// Draws a vertical bar with ticks into the area: the title at the top, cut to the width; the ends
/// of the range; a box for "no value" if it has to be explained.
void DrawScalarBar(Image& image, const Rectangle& area, const ScalarBar& bar,
                   const ColourScale& scale, double textSize, Colour ink);

}  // namespace Qov::Tools
