#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace Qov::Tools {

/// Returns the multiples of 1, 2 or 5 times a power of ten in a range, ascending, at most `most` of
/// them but as many as possible. Empty if the range is empty or not finite.
std::vector<double> MakeTicks(double low, double high, std::size_t most);

/// Returns the values with the same number of decimals, as few as tell neighbours apart; with an
/// exponent if they are very great or small ("1.5e+06").
std::vector<std::string> FormatTicks(std::span<const double> ticks);

/// Returns a value with 4 significant digits, without trailing zeros: for ends of ranges and
/// marked places.
std::string ShortNumber(double value);

}  // namespace Qov::Tools
