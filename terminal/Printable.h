#pragma once

#include <streambuf>
#include <string>
#include <string_view>

namespace Qov {

/// Steers a terminal, or changes how the text around it is read.
bool IsTreacherous(char32_t code);

/// The text with \\xNN for every byte of what is treacherous or no UTF-8. Newlines and tabs stay.
std::string MakePrintable(std::string_view text);

/// Passes text on to another buffer as MakePrintable makes it. Characters of several bytes must
/// come in one piece.
class PrintableBuffer : public std::streambuf {
 public:
  explicit PrintableBuffer(std::streambuf* target) : mpTarget(target) {}

 protected:
  int_type overflow(int_type character) override;
  std::streamsize xsputn(const char* text, std::streamsize size) override;
  int sync() override { return mpTarget->pubsync(); }

 private:
  std::streambuf* mpTarget;
};

/// Names of files and what stands in them can hold anything. While the object lives, what is
/// written to std::cerr cannot steer the terminal.
class PrintableErrors {
 public:
  PrintableErrors();
  ~PrintableErrors();
  PrintableErrors(const PrintableErrors&) = delete;
  PrintableErrors& operator=(const PrintableErrors&) = delete;

 private:
  std::streambuf* mpBefore;
  PrintableBuffer mBuffer;
};

}  // namespace Qov
