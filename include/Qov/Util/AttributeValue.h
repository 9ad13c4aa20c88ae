#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <variant>

namespace QovUtil {

/// The value of an attribute. The index of the alternative is the type index in a file.
using AttributeValue = std::variant<std::uint32_t, float, std::string, double>;

/// Attributes by name, in byte order.
using AttributeMap = std::map<std::string, AttributeValue>;

}  // namespace QovUtil
