#pragma once

#include <cstdint>
#include <string>

#include "Qov/Ryx/Attributes.h"
#include "Qov/Ryx/Geometry.h"
#include "Terminal.h"

/// Values of a model as short texts.
namespace Qov::Tools {

/// name = value, ..., the values written as the literals of their types: 7 is an unsigned
/// integer, 2.5f a float, 4.25 a double, "mm" a string.
std::string AttributesText(const QovUtil::Attributes& attributes, const TextStyle& style);
/// In quotes, escaped.
std::string QuotedText(const std::string& text, const TextStyle& style);
/// The shortest text that reads back as the float, told from an integer by a point or an
/// exponent.
std::string FloatText(float value);
/// The kind, with the high byte in front if it has one ("5:40"); "-" for none.
std::string KindText(const QovRyx::Geometry::VarStruct& variable);
/// How many items an array holds, and how many elements that make no whole item are left.
struct ItemCount {
  explicit ItemCount(const QovRyx::NumericArray& array);

  std::uint64_t mItems = 0;
  std::uint64_t mRest = 0;
};
/// The items; elements that make no whole item are told apart ("7 + 2").
std::string CountText(const QovRyx::NumericArray& array);
/// A number of bytes, rounded: "39.4 KiB".
std::string SizeText(std::uint64_t bytes);
/// An element of an array.
std::string NumberText(double value, bool integer);

}  // namespace Qov::Tools
