#include "picture/ColourScale.h"

#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace Qov::Tools {

ColourScale::ColourScale(double low, double high, std::size_t numColours)
    : mLow(low),
      mHigh(high),
      mHasRange(std::isfinite(low) && std::isfinite(high) && low <= high),
      mPalette(MakePalette(numColours == 0 ? 1 : numColours)) {}

ColourScale::ColourScale(double low, double high, std::vector<Colour> palette)
    : ColourScale(low, high, 1) {
  mPalette = std::move(palette);
}

float ColourScale::PlaceOf(double value) const {
  constexpr float kNoPlace = std::numeric_limits<float>::quiet_NaN();
  if (!mHasRange || !std::isfinite(value)) return kNoPlace;
  const auto numColours = static_cast<double>(mPalette.size());
  if (mLow == mHigh) {
    if (value == mLow) return static_cast<float>(numColours / 2);
    return value < mLow ? -1 : static_cast<float>(numColours + 1);
  }
  // Halves do not overflow.
  return static_cast<float>((value / 2 - mLow / 2) / (mHigh / 2 - mLow / 2) * numColours);
}

Colour PartColour(std::size_t number) {
  static constexpr std::array<Colour, kNumPartColours> kColours = {{{88, 134, 190},
                                                                    {232, 148, 64},
                                                                    {104, 170, 98},
                                                                    {206, 92, 92},
                                                                    {150, 122, 192},
                                                                    {222, 196, 84},
                                                                    {92, 182, 190},
                                                                    {214, 136, 184},
                                                                    {160, 124, 96},
                                                                    {148, 198, 72},
                                                                    {84, 96, 160},
                                                                    {176, 182, 190}}};
  return kColours[number % kNumPartColours];
}

}  // namespace Qov::Tools
