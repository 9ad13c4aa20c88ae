#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Qov::Tools {

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

/// Every byte as \xNN.
std::string HexBytes(std::string_view bytes);

}  // namespace Qov::Tools
