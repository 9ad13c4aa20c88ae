#include "ValueText.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <variant>

namespace Qov::Tools {
namespace {

using QovRyx::Geometry;

/// Appends ".0" to a whole number, so that it does not look like an integer.
std::string Point(const std::string& number) {
  return number.find_first_not_of("-0123456789") == number.npos ? number + ".0" : number;
}

struct ValueFormatter {
  const TextStyle& mStyle;

  std::string operator()(std::uint32_t value) const { return fmt::format("{}", value); }
  std::string operator()(double value) const { return Point(fmt::format("{}", value)); }
  std::string operator()(float value) const {
    return FloatText(value) + (std::isfinite(value) ? "f" : "");
  }
  std::string operator()(const std::string& value) const { return QuotedText(value, mStyle); }
};

}  // namespace

std::string QuotedText(const std::string& text, const TextStyle& style) {
  std::string quoted = "\"";
  for (const char letter : Escape(text, style)) {
    if (letter == '"') quoted += '\\';
    quoted += letter;
  }
  return quoted + '"';
}

std::string FloatText(float value) { return Point(fmt::format("{}", value)); }

std::string AttributesText(const QovUtil::Attributes& attributes, const TextStyle& style) {
  std::string text;
  for (const auto& [name, value] : attributes) {
    if (!text.empty()) text += ", ";
    text += Escape(name, style) + " = " + std::visit(ValueFormatter{style}, value);
  }
  return text;
}

std::string KindText(const Geometry::VarStruct& variable) {
  if (variable.mKind == Geometry::kNoKind) return "-";
  if (variable.mKindHighByte == 0) return fmt::format("{}", variable.mKind);
  return fmt::format("{}:{}", variable.mKindHighByte, variable.mKind);
}

ItemCount::ItemCount(const QovRyx::NumericArray& array) {
  const std::uint64_t width = std::max<std::uint64_t>(array.GetWidth(), 1);
  mItems = array.GetNumElements() / width;
  mRest = array.GetNumElements() % width;
}

std::string CountText(const QovRyx::NumericArray& array) {
  const ItemCount count(array);
  return count.mRest == 0 ? fmt::format("{}", count.mItems)
                          : fmt::format("{} + {}", count.mItems, count.mRest);
}

std::string SizeText(std::uint64_t bytes) {
  static constexpr std::array kUnits = {"KiB", "MiB", "GiB", "TiB"};
  double size = static_cast<double>(bytes) / 1024;
  std::size_t unit = 0;
  for (; size >= 1024 && unit + 1 < std::size(kUnits); ++unit) size /= 1024;
  return fmt::format("{:.1f} {}", size, kUnits[unit]);
}

std::string NumberText(double value, bool integer) {
  return integer ? fmt::format("{:.0f}", value) : fmt::format("{:.6g}", value);
}

}  // namespace Qov::Tools
