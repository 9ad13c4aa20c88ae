#include "Printable.h"

#include <algorithm>
#include <iostream>

#include "Utf8.h"

namespace Qov {
namespace {

bool IsBetween(char32_t code, char32_t first, char32_t last) {
  return code >= first && code <= last;
}

}  // namespace

bool IsTreacherous(char32_t code) {
  const bool control = code < 0x20 || IsBetween(code, 0x7F, 0x9F);
  const bool invisible = IsBetween(code, 0x200B, 0x200F) || IsBetween(code, 0x2028, 0x202E) ||
                         IsBetween(code, 0x2060, 0x2069) || code == 0x061C || code == 0xFEFF;
  return control || invisible;
}

std::string MakePrintable(std::string_view text) {
  std::string printable;
  while (!text.empty()) {
    const Utf8Character character = DecodeFirst(text);
    const std::string_view bytes = text.substr(0, std::max<std::size_t>(character.mLength, 1));
    const bool isLayout = bytes == "\n" || bytes == "\t";
    const bool isSafe = character.mLength > 0 && (isLayout || !IsTreacherous(character.mCode));
    printable += isSafe ? std::string(bytes) : HexBytes(bytes);
    text.remove_prefix(bytes.size());
  }
  return printable;
}

PrintableBuffer::int_type PrintableBuffer::overflow(int_type character) {
  if (traits_type::eq_int_type(character, traits_type::eof()))
    return traits_type::not_eof(character);
  const char byte = traits_type::to_char_type(character);
  return xsputn(&byte, 1) == 1 ? character : traits_type::eof();
}

std::streamsize PrintableBuffer::xsputn(const char* text, std::streamsize size) {
  const std::string printable = MakePrintable({text, static_cast<std::size_t>(size)});
  const auto length = static_cast<std::streamsize>(printable.size());
  return mpTarget->sputn(printable.data(), length) == length ? size : 0;
}

PrintableErrors::PrintableErrors() : mpBefore(std::cerr.rdbuf()), mBuffer(mpBefore) {
  std::cerr.rdbuf(&mBuffer);
}

PrintableErrors::~PrintableErrors() { std::cerr.rdbuf(mpBefore); }

}  // namespace Qov
