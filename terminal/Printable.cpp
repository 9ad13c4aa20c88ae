#include "Printable.h"

#include <iostream>
#include <string>

#include "diagnostics/Printable.h"

namespace Qov {
PrintableBuffer::int_type PrintableBuffer::overflow(int_type character) {
  if (traits_type::eq_int_type(character, traits_type::eof()))
    return traits_type::not_eof(character);
  const char byte = traits_type::to_char_type(character);
  return xsputn(&byte, 1) == 1 ? character : traits_type::eof();
}

std::streamsize PrintableBuffer::xsputn(const char* text, std::streamsize size) {
  const std::string printable = Util::MakePrintable({text, static_cast<std::size_t>(size)});
  const auto length = static_cast<std::streamsize>(printable.size());
  return mpTarget->sputn(printable.data(), length) == length ? size : 0;
}

PrintableErrors::PrintableErrors() : mpBefore(std::cerr.rdbuf()), mBuffer(mpBefore) {
  std::cerr.rdbuf(&mBuffer);
}

PrintableErrors::~PrintableErrors() { std::cerr.rdbuf(mpBefore); }

}  // namespace Qov
