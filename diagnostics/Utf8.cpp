#include "Utf8.h"

namespace Qov {
namespace {

std::size_t SequenceLength(unsigned char first) {
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first < 0xE0) return 2;
  if (first >= 0xE0 && first < 0xF0) return 3;
  if (first >= 0xF0 && first < 0xF5) return 4;
  return 0;
}

}  // namespace

Utf8Character DecodeFirst(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  const std::size_t length = SequenceLength(first);
  if (length == 0 || length > text.size()) return {};
  char32_t code = length == 1 ? first : first & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if (!IsUtf8Continuation(text[i])) return {};
    code = code << 6 | (static_cast<unsigned char>(text[i]) & 0x3FU);
  }
  const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  const bool surrogate = code >= 0xD800 && code < 0xE000;
  if (overlong || surrogate || code > 0x10FFFF) return {};
  return {code, length};
}

std::string Shortened(std::string_view text, std::size_t most) {
  if (text.size() <= most) return std::string(text);
  while (most > 0 && IsUtf8Continuation(text[most])) --most;
  return std::string(text.substr(0, most)) + "...";
}

std::string HexBytes(std::string_view bytes) {
  std::string text;
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    text += {'\\', 'x', kDigits[value >> 4], kDigits[value & 0xF]};
  }
  return text;
}

}  // namespace Qov
