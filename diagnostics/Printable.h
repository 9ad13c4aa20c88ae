#pragma once

#include <string>
#include <string_view>

/// Makes text safe to print, so that it cannot control a terminal or mislead the reader. Paths and
/// names can have any bytes.
namespace Qov::Util {

/// Returns true for control characters, invisible format characters (direction, width, tags), line
/// separators and noncharacters.
bool IsUnsafeToPrint(char32_t code);

/// Returns a text of one or more lines with \xNN for every byte of an unsafe character and for
/// every byte that is not UTF-8. Newlines and tabs stay.
std::string MakePrintable(std::string_view text);

/// Returns a path or name in quotes for a message or a log line. Escapes the same bytes as
/// MakePrintable and also newlines and tabs.
std::string Quote(std::string_view name);

/// Returns the same without the quotes.
std::string EscapeName(std::string_view name);

}  // namespace Qov::Util
