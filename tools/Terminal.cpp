#include "Terminal.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <system_error>

#include "Qov/Ryx/InstanceNames.h"
#include "diagnostics/Printable.h"
#include "diagnostics/Utf8.h"

namespace Qov::Tools {
namespace {

constexpr char32_t kSeparatorMark = U'\u241E';
constexpr std::string_view kSeparatorMarkBytes = "\u241E";

std::string_view Environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

bool HasUtf8Locale() {
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const std::string_view value = Environment(name);
    if (value.empty()) continue;
    return value.find("UTF-8") != value.npos || value.find("utf8") != value.npos;
  }
  return false;
}

unsigned TerminalWidth(int descriptor) {
  winsize size{};
  const bool known = ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
  return known ? size.ws_col : TextStyle().mWidth;
}

/// Returns the byte if the text begins with \xNN.
std::optional<char> EscapedByte(std::string_view text) {
  if (text.size() < 4 || !text.starts_with("\\x")) return std::nullopt;
  unsigned byte = 0;
  const char* end = text.data() + 4;
  const auto [stop, error] = std::from_chars(text.data() + 2, end, byte, 16);
  if (error != std::errc() || stop != end) return std::nullopt;
  return static_cast<char>(byte);
}

std::string Coloured(std::string_view text, const char* code, const TextStyle& style) {
  return style.mColour ? fmt::format("\033[{}m{}\033[0m", code, text) : std::string(text);
}

}  // namespace

TextStyle DetectStyle(int descriptor) {
  TextStyle style;
  style.mTerminal = isatty(descriptor) == 1;
  if (!style.mTerminal) return style;
  style.mUtf8 = HasUtf8Locale();
  style.mColour = Environment("NO_COLOR").empty() && Environment("TERM") != "dumb";
  style.mWidth = TerminalWidth(descriptor);
  return style;
}

std::string Escape(std::string_view text, const TextStyle& style) {
  const bool asciiOnly = style.mTerminal && !style.mUtf8;
  std::string escaped;
  while (!text.empty()) {
    const Utf8Character character = DecodeFirst(text);
    const std::string_view bytes = text.substr(0, std::max<std::size_t>(character.mLength, 1));
    if (style.mUtf8 && bytes.front() == QovRyx::kInstanceSeparator) {
      escaped += kSeparatorMarkBytes;
    } else if (bytes == "\\") {
      escaped += "\\\\";
    } else if (character.mLength == 0 || character.mCode == kSeparatorMark ||
               Util::IsUnsafeToPrint(character.mCode) || (asciiOnly && character.mLength > 1)) {
      escaped += HexBytes(bytes);
    } else {
      escaped += bytes;
    }
    text.remove_prefix(bytes.size());
  }
  return escaped;
}

std::string Unescape(std::string_view escaped) {
  std::string text;
  while (!escaped.empty()) {
    std::size_t length = 1;
    if (const auto byte = EscapedByte(escaped)) {
      text += *byte;
      length = 4;
    } else if (escaped.starts_with(kSeparatorMarkBytes)) {
      text += QovRyx::kInstanceSeparator;
      length = kSeparatorMarkBytes.size();
    } else {
      text += escaped.front();
      if (escaped.starts_with("\\\\")) length = 2;
    }
    escaped.remove_prefix(length);
  }
  return text;
}

std::size_t DisplayWidth(std::string_view text) {
  return text.size() -
         static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsUtf8Continuation));
}

std::string Dim(std::string_view text, const TextStyle& style) {
  return Coloured(text, "2", style);
}
std::string Bold(std::string_view text, const TextStyle& style) {
  return Coloured(text, "1", style);
}
std::string Yellow(std::string_view text, const TextStyle& style) {
  return Coloured(text, "33", style);
}

}  // namespace Qov::Tools
