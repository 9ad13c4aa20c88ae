#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Qov::Tools {

/// Returns "1 view" or "3 views".
std::string Plural(std::uint64_t count, std::string_view noun);

/// Returns "1 byte follows" or "3 bytes follow".
std::string Plural(std::uint64_t count, std::string_view noun, std::string_view verb);

}  // namespace Qov::Tools
