#pragma once

#include <string>
#include <string_view>

#include "Qov/Export.h"

/// Text that cannot steer a terminal or mislead the reader. Paths and names can hold anything.
namespace Qov::Util {

/// Returns true for control characters, invisible format characters (direction, width, tags), line
/// separators and noncharacters.
QOV_EXPORT bool IsTreacherous(char32_t code);

/// Returns the text of one or more lines with \xNN for every byte of a treacherous character and
/// every byte that is not UTF-8. Newlines and tabs stay.
QOV_EXPORT std::string MakePrintable(std::string_view text);

/// Returns a path or name in quotes for a message or a line of the log: as MakePrintable, with
/// newlines and tabs escaped as well.
QOV_EXPORT std::string Quote(std::string_view name);

/// Returns the same without the quotes.
QOV_EXPORT std::string EscapeName(std::string_view name);

}  // namespace Qov::Util
