#pragma once

#include <string>

namespace Qov::Tools {

/// Returns true if the name of a result matches a pattern with *, ? and [...]. The pattern is for a
/// name as ryx shows it, on a terminal or in a pipe, or for the same without the instance part. A
/// name as shown always matches itself, even if it contains pattern characters.
bool MatchesResult(const std::string& name, const std::string& pattern);

}  // namespace Qov::Tools
