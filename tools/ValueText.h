#pragma once

#include <cstdint>
#include <string>

#include "Qov/Ryx/Attributes.h"
#include "Qov/Ryx/Geometry.h"
#include "Terminal.h"

/// Values of a model as short texts.
namespace Qov::Tools {

/// Returns "name = value, ..." with values as literals of their types: 7 is an unsigned integer,
/// 2.5f a float, 4.25 a double, "mm" a string.
std::string AttributesText(const QovUtil::Attributes& attributes, const TextStyle& style);
/// Returns the text in quotes, escaped.
std::string QuotedText(const std::string& text, const TextStyle& style);
/// Returns the shortest text that reads back as the float, with a point or an exponent.
std::string FloatText(float value);
/// Returns the kind, after its high byte if that is not 0 ("5:40"); "-" for none.
std::string KindText(const QovRyx::Geometry::VarStruct& variable);
/// The number of items of an array, and of elements after the last whole item.
struct ItemCount {
  explicit ItemCount(const QovRyx::NumericArray& array);

  std::uint64_t mItems = 0;
  std::uint64_t mRest = 0;
};
/// Returns the number of items, and of elements after the last whole item ("7 + 2").
std::string CountText(const QovRyx::NumericArray& array);
/// Returns a number of bytes, rounded: "39.4 KiB".
std::string SizeText(std::uint64_t bytes);
/// Returns an element of an array as text.
std::string NumberText(double value, bool integer);

}  // namespace Qov::Tools
