#pragma once

#include <string>

#include "Qov/Ryx/Geometry.h"
#include "Qov/Util/AttributeValue.h"
#include "Terminal.h"

/// Values of a model as short texts.
namespace Qov::Tools {

/// name = value, ..., the values written as the literals of their types: 7 is an unsigned
/// integer, 2.5f a float, 4.25 a double, "mm" a string.
std::string AttributesText(const QovUtil::AttributeMap& attributes, const TextStyle& style);
/// The kind, with the high byte in front if it has one ("5:40"); "-" for none.
std::string KindText(const QovRyx::Geometry::VarStruct& variable);
/// How many items the array holds; elements that make no whole item are told apart ("7 + 2").
std::string CountText(const QovRyx::NumericArray& array);
/// An element of an array.
std::string NumberText(double value, bool integer);

}  // namespace Qov::Tools
