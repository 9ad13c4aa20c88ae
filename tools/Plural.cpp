#include "Plural.h"

#include <fmt/format.h>

namespace Qov::Tools {

std::string Plural(std::uint64_t count, std::string_view noun) {
  return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::string Plural(std::uint64_t count, std::string_view noun, std::string_view verb) {
  return fmt::format("{} {}{}", Plural(count, noun), verb, count == 1 ? "s" : "");
}

}  // namespace Qov::Tools
