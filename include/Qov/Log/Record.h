#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>

#include "Qov/Export.h"

namespace Qov::Util {

/// What a log line is made from. Text beyond the array is dropped.
struct LogRecord {
  static constexpr std::size_t kMessageSize = 5120;

  std::uint16_t mLevel;
  std::array<char, kMessageSize> mMessage;  // ends with a zero byte
  const char* mFile;
  unsigned long mLine;
  const char* mMethod;
  std::time_t mTime;
};

}  // namespace Qov::Util

namespace Qov::Log {

/// Progress, shown only once one of the LogTraceTo... functions was called.
inline constexpr std::uint16_t kTraceLevel = 1000;
/// Errors, logged right before they are thrown.
inline constexpr std::uint16_t kErrorLevel = 2000;

/// A log line under construction: append to it; it is emitted when it goes out of scope.
class QOV_EXPORT Record {
 public:
  Record(unsigned short level, const char* file, unsigned long line, const char* method);
  ~Record();
  Record(const Record&) = delete;
  Record& operator=(const Record&) = delete;

  Record& operator<<(const char* text);
  Record& operator<<(const std::string& text) { return *this << text.c_str(); }
  template <std::integral Number>
  Record& operator<<(Number number) {
    return *this << std::to_string(number);
  }

 private:
  Util::LogRecord mRecord;
  std::size_t mLength = 0;
};

/// A progress line of the module whose source constant is `source`.
inline Record Trace(const char* source, unsigned long line = __builtin_LINE()) {
  return {kTraceLevel, source, line, "<unknown>"};
}

}  // namespace Qov::Log
