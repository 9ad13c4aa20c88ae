#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Qov::Tools {

/// Returns the candidate that is closest to the misspelled `word`; empty if none is close.
std::string Suggest(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace Qov::Tools
