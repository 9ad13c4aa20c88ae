#pragma once

#include <string>

namespace Qov::Util {

/// Returns true if a text matches a pattern with *, ? and [...]. The last two match one byte in any
/// locale. A backslash has no special meaning.
bool MatchesPattern(const std::string& text, const std::string& pattern);

}  // namespace Qov::Util
