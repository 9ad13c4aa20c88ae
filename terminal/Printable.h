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
