#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "picture/Image.h"

/// Text in images. Texts are UTF-8; bytes that are not UTF-8, control characters and characters
/// that the font lacks are drawn as a box. `size` is the height of the font in pixels.
namespace Qov::Tools {

enum class Align : std::uint8_t { Left, Centre, Right };

/// Returns the width in pixels.
double MeasureText(std::string_view text, double size);

/// Returns the distance between two lines, in pixels, rounded up.
int LineHeight(double size);

/// Draws one line. `x` is its left end, centre or right end; `y` is the top of a box with the
/// height LineHeight(size).
void DrawText(Image& image, double x, double y, std::string_view text, double size, Colour colour,
              Align align = Align::Left);

/// Returns the text, or its beginning with an ellipsis that fits into `width` pixels.
std::string CutText(std::string_view text, double size, double width);

/// Draws a text at a place of the image on a background that makes it readable on any colours.
/// Moves it so that it is inside of the image.
void DrawLabel(Image& image, double x, double y, std::string_view text, double size, Colour ink,
               Colour paper);

}  // namespace Qov::Tools
