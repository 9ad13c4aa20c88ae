#pragma once

#include <string>
#include <string_view>

namespace Qov::Tools {

/// Properties of the destination of a text.
struct TextStyle {
  bool mTerminal = false;  ///< False: the output depends on the input only.
  bool mUtf8 = false;      ///< Tree lines and other characters outside ASCII are allowed.
  bool mColour = false;
  unsigned mWidth = 80;  ///< Columns of the terminal.
};

/// Returns the style for text that is written to the file descriptor.
TextStyle DetectStyle(int descriptor);

/// Returns `text` in an unambiguous form that is safe to show.
///
/// Control characters, marks of text direction and bytes that are not UTF-8 become \xNN, because
/// they could control a terminal or mislead the reader. So do characters outside ASCII if the
/// terminal cannot show them. A backslash is doubled. The separator before an instance part becomes
/// \x1E, or a visible mark on a UTF-8 terminal.
std::string Escape(std::string_view text, const TextStyle& style);

/// Reverts Escape for any style. Characters that Escape never produces stay unchanged.
std::string Unescape(std::string_view escaped);

/// Returns the width of an escaped text in columns.
std::size_t DisplayWidth(std::string_view text);

/// Returns `text` dimmed on a terminal with colours.
std::string Dim(std::string_view text, const TextStyle& style);
/// Returns `text` in bold on a terminal with colours.
std::string Bold(std::string_view text, const TextStyle& style);
/// Returns `text` in yellow on a terminal with colours.
std::string Yellow(std::string_view text, const TextStyle& style);

}  // namespace Qov::Tools
