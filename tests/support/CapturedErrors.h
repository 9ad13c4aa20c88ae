#pragma once

#include <iostream>
#include <sstream>
#include <string>

namespace Qov::Test {

/// Collects what is written to std::cerr while the object exists.
class CapturedErrors {
 public:
  CapturedErrors() : mBuffer(std::cerr.rdbuf(mText.rdbuf())) { mText.str(std::string(4096, ' ')); }
  ~CapturedErrors() { std::cerr.rdbuf(mBuffer); }
  CapturedErrors(const CapturedErrors&) = delete;
  CapturedErrors& operator=(const CapturedErrors&) = delete;

  std::string Text() const {
    const std::string text = mText.str();
    return text.substr(0, text.find_last_not_of(' ') + 1);
  }

 private:
  std::ostringstream mText;  ///< Allocated in advance for messages about a lack of memory.
  std::streambuf* mBuffer;
};

}  // namespace Qov::Test
