#include "Terminal.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "Qov/Ryx/InstanceNames.h"

namespace Qov::Tools {
namespace {

constexpr char32_t kSeparatorMark = U'\u241E';
constexpr std::string_view kSeparatorMarkBytes = "\u241E";

bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

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

/// A character at the start of a text. Length 0: the bytes there are none.
struct Character {
  char32_t mCode = 0;
  std::size_t mLength = 0;
};

std::size_t SequenceLength(unsigned char first) {
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first < 0xE0) return 2;
  if (first >= 0xE0 && first < 0xF0) return 3;
  if (first >= 0xF0 && first < 0xF5) return 4;
  return 0;
}

/// Strict: no overlong forms, no surrogates, nothing above U+10FFFF.
Character DecodeFirst(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  const std::size_t length = SequenceLength(first);
  if (length == 0 || length > text.size()) return {};
  char32_t code = length == 1 ? first : first & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if (!IsContinuation(text[i])) return {};
    code = code << 6 | (static_cast<unsigned char>(text[i]) & 0x3FU);
  }
  const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  const bool surrogate = code >= 0xD800 && code < 0xE000;
  if (overlong || surrogate || code > 0x10FFFF) return {};
  return {code, length};
}

bool IsBetween(char32_t code, char32_t first, char32_t last) {
  return code >= first && code <= last;
}

/// Steers a terminal, or changes how the text around it is read.
bool IsTreacherous(char32_t code) {
  const bool control = code < 0x20 || IsBetween(code, 0x7F, 0x9F);
  const bool invisible = IsBetween(code, 0x200B, 0x200F) || IsBetween(code, 0x2028, 0x202E) ||
                         IsBetween(code, 0x2060, 0x2069) || code == 0xFEFF;
  return control || invisible || code == kSeparatorMark;
}

std::string HexBytes(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) text += fmt::format("\\x{:02X}", static_cast<unsigned char>(byte));
  return text;
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
    const Character character = DecodeFirst(text);
    const std::string_view bytes = text.substr(0, std::max<std::size_t>(character.mLength, 1));
    if (style.mUtf8 && bytes.front() == QovRyx::kInstanceSeparator) {
      escaped += kSeparatorMarkBytes;
    } else if (bytes == "\\") {
      escaped += "\\\\";
    } else if (character.mLength == 0 || IsTreacherous(character.mCode) ||
               (asciiOnly && character.mLength > 1)) {
      escaped += HexBytes(bytes);
    } else {
      escaped += bytes;
    }
    text.remove_prefix(bytes.size());
  }
  return escaped;
}

std::size_t DisplayWidth(std::string_view text) {
  return text.size() -
         static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsContinuation));
}

std::string Dim(std::string_view text, const TextStyle& style) {
  return Coloured(text, "2", style);
}
std::string Bold(std::string_view text, const TextStyle& style) {
  return Coloured(text, "1", style);
}

}  // namespace Qov::Tools
