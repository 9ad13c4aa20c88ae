#pragma once

#include <cstdint>

namespace QovJbf {

/// What the environment variable `name` says, in decimal; `otherwise` when it is unset or above
/// 4294967294. Text that is no number counts as 0.
std::uint32_t ReadSizeVariable(const char* name, std::uint32_t otherwise);

}  // namespace QovJbf
