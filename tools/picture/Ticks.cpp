#include "picture/Ticks.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace Qov::Tools {
namespace {

// Numbers outside of this range are written with an exponent.
constexpr double kLeastPlain = 1e-3;
constexpr double kMostPlain = 1e6;

bool IsPlain(double greatest) {
  return greatest == 0 || (greatest >= kLeastPlain && greatest < kMostPlain);
}

std::string Format(double value, bool isPlain, int decimals) {
  if (value == 0 && !isPlain) return "0";
  const double unsignedZero = value == 0 ? 0 : value;  // not "-0"
  return isPlain ? fmt::format("{:.{}f}", unsignedZero, decimals)
                 : fmt::format("{:.{}e}", unsignedZero, decimals);
}

std::vector<std::string> FormatAll(std::span<const double> values, bool isPlain, int decimals) {
  std::vector<std::string> texts;
  for (const double value : values) texts.push_back(Format(value, isPlain, decimals));
  return texts;
}

/// Returns the multiples of `factor` times ten to the power of `exponent`.
std::vector<double> Multiples(double low, double high, double factor, int exponent,
                              std::size_t most) {
  // Powers of ten with a positive exponent are exact: 3 / 10 is the float next to 0.3, 3 * 0.1 not.
  const double power = std::pow(10, std::abs(exponent));
  const auto multiple = [&](double i) {
    return exponent < 0 ? i * factor / power : i * factor * power;
  };
  const double step = multiple(1);
  const double slack = 1e-9;  // of a step
  const double first = std::ceil(low / step - slack);
  const double last = std::floor(high / step + slack);
  std::vector<double> values;
  if (last - first >= static_cast<double>(most)) return values;
  for (double i = first; i <= last; ++i) values.push_back(multiple(i) + 0.0);
  return values;
}

}  // namespace

std::vector<double> MakeTicks(double low, double high, std::size_t most) {
  if (!std::isfinite(low) || !std::isfinite(high) || low > high || most == 0) return {};
  const double size = high - low;
  const double greatest = std::max(std::abs(low), std::abs(high));
  // Multiples of steps below the resolution of the numbers would repeat.
  if (size <= greatest * 1e-13 || !std::isfinite(size)) return {low};
  const int least = static_cast<int>(std::floor(std::log10(size / static_cast<double>(most)))) - 1;
  for (int exponent = std::max(least, -300); exponent <= 307; ++exponent) {
    for (const double factor : {1.0, 2.0, 5.0}) {
      auto values = Multiples(low, high, factor, exponent, most);
      if (!values.empty()) return values;
    }
  }
  return {low};
}

std::vector<std::string> FormatTicks(std::span<const double> ticks) {
  if (ticks.empty()) return {};
  double greatest = 0;
  for (const double tick : ticks) greatest = std::max(greatest, std::abs(tick));
  double gap = ticks.size() == 1 ? greatest : std::numeric_limits<double>::infinity();
  for (std::size_t i = 1; i < ticks.size(); ++i) gap = std::min(gap, ticks[i] - ticks[i - 1]);
  const bool isPlain = IsPlain(greatest);
  constexpr int kMostDecimals = 16;
  for (int decimals = 0; decimals < kMostDecimals; ++decimals) {
    auto texts = FormatAll(ticks, isPlain, decimals);
    bool isExact = true;
    for (std::size_t i = 0; i < ticks.size(); ++i) {
      isExact =
          isExact && std::abs(std::strtod(texts[i].c_str(), nullptr) - ticks[i]) <= 1e-4 * gap;
    }
    if (isExact) return texts;
  }
  return FormatAll(ticks, isPlain, kMostDecimals);
}

std::string ShortNumber(double value) {
  if (!std::isfinite(value)) return fmt::format("{}", value);
  constexpr int kDigits = 4;
  const double size = std::abs(value);
  const bool isPlain = IsPlain(size);
  const int before = size == 0 ? 1 : static_cast<int>(std::floor(std::log10(size))) + 1;
  std::string text = Format(value, isPlain, isPlain ? std::max(0, kDigits - before) : kDigits - 1);
  const std::size_t point = text.find('.');
  if (point == std::string::npos) return text;
  std::size_t end = std::min(text.find('e'), text.size());
  const std::size_t after = end;
  while (text[end - 1] == '0') --end;
  if (text[end - 1] == '.') --end;
  return text.erase(end, after - end);
}

}  // namespace Qov::Tools
