#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Qov::Tools {

/// Red, green, blue; 0 to 255, with the transfer function of sRGB.
using Colour = std::array<std::uint8_t, 3>;

/// Returns the colours of a scale from dark blue over green to yellow. Their lightness (OKLab)
/// grows in equal steps, so that equal differences of a value look equal.
std::vector<Colour> MakePalette(std::size_t numColours);

/// Returns the colours of a scale from blue over light grey to red, for values around 0. The
/// lightness falls in equal steps from the middle to both ends.
std::vector<Colour> MakeDivergingPalette(std::size_t numColours);

/// The colour of values that are not numbers.
inline constexpr Colour kNoValueColour = {160, 160, 160};

}  // namespace Qov::Tools
