#pragma once

#include <streambuf>

namespace Qov {

/// Passes text through Util::MakePrintable to another buffer. All bytes of a character must be
/// written at once.
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

/// Makes text safe that is written to std::cerr while the object exists, because names and contents
/// of files can have any bytes. The text cannot control the terminal then.
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
