#pragma once

#include <cstddef>
#include <vector>

#include "Palette.h"

namespace Qov::Tools {

/// Maps values to the colours of a palette.
class ColourScale {
 public:
  /// `numColours` is the number of steps. If `low` is greater than `high` or one of them is not
  /// finite, there is no range: all values have the colour of no value.
  ColourScale(double low, double high, std::size_t numColours = 256);
  /// Takes other colours than those of MakePalette; at least one.
  ColourScale(double low, double high, std::vector<Colour> palette);

  bool HasRange() const { return mHasRange; }
  double GetLow() const { return mLow; }
  double GetHigh() const { return mHigh; }
  const std::vector<Colour>& GetPalette() const { return mPalette; }

  /// Returns the place of a value on the palette: 0 is the low end of the first colour, the number
  /// of colours is the high end of the last. Values outside of the range have places outside. NaN
  /// for values that are not finite. If low and high are equal, that value is in the middle.
  float PlaceOf(double value) const;
  /// Returns the colour at a place: the nearest end outside of the palette, kNoValueColour for NaN.
  Colour ColourAt(float place) const {
    if (!(place == place)) return kNoValueColour;
    if (place <= 0) return mPalette.front();
    const auto last = static_cast<float>(mPalette.size() - 1);
    return place >= last ? mPalette.back() : mPalette[static_cast<std::size_t>(place)];
  }
  Colour ColourOf(double value) const { return ColourAt(PlaceOf(value)); }

 private:
  double mLow;
  double mHigh;
  bool mHasRange;
  std::vector<Colour> mPalette;
};

/// Returns the colour of the part with this number, from 0. Neighbouring numbers differ clearly;
/// the colours repeat after kNumPartColours.
Colour PartColour(std::size_t number);
inline constexpr std::size_t kNumPartColours = 12;

}  // namespace Qov::Tools
