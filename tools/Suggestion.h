#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Qov::Tools {

/// The candidate that `word` is most likely a misspelling of; empty if none is near.
std::string Suggest(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace Qov::Tools
