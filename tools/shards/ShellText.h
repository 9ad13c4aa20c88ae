#pragma once

#include <string>
#include <string_view>

namespace Qov::Tools {

/// Returns a word that a shell reads as this text.
std::string QuoteForShell(std::string_view text);

}  // namespace Qov::Tools
