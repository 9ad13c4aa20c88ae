#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "Terminal.h"

/// Cuts escaped texts to a number of columns. The omitted part becomes an ellipsis, which is "..."
/// where the output is not UTF-8.
namespace Qov::Tools {

/// Returns the ellipsis.
std::string_view Ellipsis(const TextStyle& style);

/// Keeps the end.
std::string FitStart(std::string_view text, std::size_t width, const TextStyle& style);

/// Keeps the beginning.
std::string FitEnd(std::string_view text, std::size_t width, const TextStyle& style);

/// Keeps the beginning and the end, because names often differ there.
std::string FitMiddle(std::string_view text, std::size_t width, const TextStyle& style);

/// Keeps the beginning of a line for a terminal. Returns the whole line for any other output.
std::string FitLine(std::string_view line, const TextStyle& style);

}  // namespace Qov::Tools
