#pragma once

#include <string>
#include <vector>

namespace CLI {
class Option;
}

namespace Qov::Tools {

/// Returns the arguments that give a parsed option again; nothing if it was not given. Patterns
/// are escaped (Escape), because the parser reverts that.
std::vector<std::string> RepeatOption(const CLI::Option& option);

}  // namespace Qov::Tools
