#pragma once

#include <string>
#include <string_view>

namespace Qov::Tools {

/// How text has to look for where it goes.
struct TextStyle {
  bool mTerminal = false;  ///< Somebody is watching. If not, the same input gives the same lines.
  bool mUtf8 = false;      ///< Tree lines and marks beyond ASCII may be used.
  bool mColour = false;
  unsigned mWidth = 80;  ///< Columns of the terminal.
};

/// The style for what is written to the file descriptor.
TextStyle DetectStyle(int descriptor);

/// `text` in a form that is safe to show, and that no other text has.
///
/// What could steer a terminal or mislead the eye (control characters, text direction, bytes that
/// are no UTF-8) becomes \xNN, and a backslash becomes two. So does, where only ASCII may be used,
/// all else. The separator in front of an instance part is \x1E, or a mark of its own on a
/// terminal that can show it.
std::string Escape(std::string_view text, const TextStyle& style);

/// The text that Escape made the given one of, whatever the style was. What no escaped text holds
/// stays as it is.
std::string Unescape(std::string_view escaped);

/// The columns that an escaped text takes.
std::size_t DisplayWidth(std::string_view text);

/// `text` made dim on a terminal with colours.
std::string Dim(std::string_view text, const TextStyle& style);
/// `text` made bold on a terminal with colours.
std::string Bold(std::string_view text, const TextStyle& style);
/// Returns `text` in yellow on a terminal with colours.
std::string Yellow(std::string_view text, const TextStyle& style);

}  // namespace Qov::Tools
