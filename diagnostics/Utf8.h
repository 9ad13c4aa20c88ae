#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Qov {

/// A character at the start of a text. Its length is 0 if the bytes are not valid UTF-8.
struct Utf8Character {
  char32_t mCode = 0;
  std::size_t mLength = 0;
};

/// Decodes the first character of a text, which must not be empty. Refuses overlong forms,
/// surrogates, and codes above U+10FFFF.
Utf8Character DecodeFirst(std::string_view text);

inline bool IsUtf8Continuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// Returns the text if it has at most `most` bytes. Returns as many characters as fit into `most`
/// bytes and "..." otherwise. For names in messages, because a name can be as long as a file.
std::string Shortened(std::string_view text, std::size_t most = 256);

/// Returns each byte as \xNN.
std::string HexBytes(std::string_view bytes);

}  // namespace Qov
