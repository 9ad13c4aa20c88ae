#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <variant>

namespace QovUtil {

/// A free-form attribute. The position of the alternative is the type index in a file.
using AttributeValue = std::variant<std::uint32_t, float, std::string, double>;

/// Attributes by name, ordered byte by byte.
using AttributeMap = std::map<std::string, AttributeValue>;

}  // namespace QovUtil
