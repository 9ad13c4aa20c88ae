#include "Palette.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Qov::Tools {
namespace {

std::uint8_t EncodeChannel(double linear) {
  const double c = std::clamp(linear, 0.0, 1.0);
  const double encoded = c <= 0.0031308 ? 12.92 * c : 1.055 * std::pow(c, 1 / 2.4) - 0.055;
  return static_cast<std::uint8_t>(std::lround(255 * encoded));
}

/// Returns the linear red, green and blue of an OKLab colour.
std::array<double, 3> FromOklab(double lightness, double a, double b) {
  const double l = std::pow(lightness + 0.3963377774 * a + 0.2158037573 * b, 3);
  const double m = std::pow(lightness - 0.1055613458 * a - 0.0638541728 * b, 3);
  const double s = std::pow(lightness - 0.0894841775 * a - 1.2914855480 * b, 3);
  return {4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s,
          -1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s,
          -0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s};
}

bool IsDisplayable(const std::array<double, 3>& colour) {
  return std::all_of(colour.begin(), colour.end(), [](double c) { return c >= 0 && c <= 1; });
}

/// Returns the colour of a lightness and a hue in degrees: of the chroma, or of the greatest one
/// below it that a screen can show.
Colour MakeColour(double lightness, double mostChroma, double hue) {
  const double angle = hue * std::numbers::pi / 180;
  std::array<double, 3> linear{};
  for (double chroma = mostChroma; chroma >= 0; chroma -= 0.001) {
    linear = FromOklab(lightness, chroma * std::cos(angle), chroma * std::sin(angle));
    if (IsDisplayable(linear)) break;
  }
  return {EncodeChannel(linear[0]), EncodeChannel(linear[1]), EncodeChannel(linear[2])};
}

/// Returns the colour at a place of the scale, 0 to 1.
Colour ColourAt(double place) {
  constexpr double kDarkest = 0.28;
  constexpr double kLightest = 0.92;
  constexpr double kFirstHue = 285;  // degrees: blue
  constexpr double kLastHue = 105;   // yellow
  constexpr double kChroma = 0.17;
  return MakeColour(kDarkest + place * (kLightest - kDarkest), kChroma,
                    kFirstHue + place * (kLastHue - kFirstHue));
}

/// Returns the colour at a place of the scale around 0, -1 to 1.
Colour DivergingColourAt(double place) {
  constexpr double kDarkest = 0.42;
  constexpr double kLightest = 0.94;
  constexpr double kNegativeHue = 260;  // degrees: blue
  constexpr double kPositiveHue = 28;   // red
  constexpr double kChroma = 0.2;
  const double distance = std::abs(place);
  return MakeColour(kLightest - distance * (kLightest - kDarkest), kChroma * distance,
                    place < 0 ? kNegativeHue : kPositiveHue);
}

}  // namespace

std::vector<Colour> MakePalette(std::size_t numColours) {
  std::vector<Colour> colours(numColours);
  const double last = numColours > 1 ? static_cast<double>(numColours - 1) : 1;
  for (std::size_t i = 0; i < numColours; ++i) colours[i] = ColourAt(static_cast<double>(i) / last);
  return colours;
}

std::vector<Colour> MakeDivergingPalette(std::size_t numColours) {
  std::vector<Colour> colours(numColours);
  const double last = numColours > 1 ? static_cast<double>(numColours - 1) : 1;
  for (std::size_t i = 0; i < numColours; ++i) {
    colours[i] = DivergingColourAt(2 * static_cast<double>(i) / last - 1);
  }
  return colours;
}

}  // namespace Qov::Tools
