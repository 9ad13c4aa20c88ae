#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Qov {

/// A character at the start of a text. Length 0: the bytes there are none.
struct Utf8Character {
  char32_t mCode = 0;
  std::size_t mLength = 0;
};

/// Decodes the first character of a text that is not empty. Strict: no overlong forms, no
/// surrogates, nothing above U+10FFFF.
Utf8Character DecodeFirst(std::string_view text);

inline bool IsUtf8Continuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// The text, or of a long one as many characters as go into `most` bytes, and "...". For names that
/// are told again and again: one could be as long as a file.
std::string Shortened(std::string_view text, std::size_t most = 256);

/// Every byte as \xNN.
std::string HexBytes(std::string_view bytes);

}  // namespace Qov
