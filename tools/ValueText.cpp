#include "ValueText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <variant>

namespace Qov::Tools {
namespace {

using QovRyx::Geometry;

/// Gives a whole number the point that tells it from an integer.
std::string Point(const std::string& number) {
  return number.find_first_not_of("-0123456789") == number.npos ? number + ".0" : number;
}

struct ValueFormatter {
  const TextStyle& mStyle;

  std::string operator()(std::uint32_t value) const { return fmt::format("{}", value); }
  std::string operator()(double value) const { return Point(fmt::format("{}", value)); }
  std::string operator()(float value) const {
    return Point(fmt::format("{}", value)) + (std::isfinite(value) ? "f" : "");
  }
  std::string operator()(const std::string& value) const {
    std::string quoted = "\"";
    for (const char letter : Escape(value, mStyle)) {
      if (letter == '"') quoted += '\\';
      quoted += letter;
    }
    return quoted + '"';
  }
};

}  // namespace

std::string AttributesText(const QovUtil::AttributeMap& attributes, const TextStyle& style) {
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

std::string CountText(const QovRyx::NumericArray& array) {
  const std::uint64_t width = std::max<std::uint64_t>(array.GetWidth(), 1);
  const std::uint64_t items = array.GetNumElements() / width;
  const std::uint64_t rest = array.GetNumElements() % width;
  return rest == 0 ? fmt::format("{}", items) : fmt::format("{} + {}", items, rest);
}

std::string NumberText(double value, bool integer) {
  return integer ? fmt::format("{:.0f}", value) : fmt::format("{:.6g}", value);
}

}  // namespace Qov::Tools
