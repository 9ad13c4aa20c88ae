#pragma once

#include <cstdint>

namespace QovJbf {

/// Returns the decimal value of the environment variable `name`. Returns `otherwise` if the
/// variable is not set or above 4294967294. Text that is not a number counts as 0.
std::uint32_t ReadSizeVariable(const char* name, std::uint32_t otherwise);

}  // namespace QovJbf
