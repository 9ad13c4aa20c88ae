#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>

#include "Qov/Export.h"

namespace Qov::Util {

/// The data of a log line. Text beyond the array is dropped.
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

/// Level of progress records, which are logged only after a LogTraceTo... function was called.
inline constexpr std::uint16_t kTraceLevel = 1000;
/// Level of error records, which are logged before the error is thrown.
inline constexpr std::uint16_t kErrorLevel = 2000;

/// The name of the failing function in log lines and errors, which have a place for it that is not
/// used.
inline constexpr const char* kUnknownMethod = "<unknown>";

/// A log line to which text is appended. The destructor writes it.
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

/// Returns a progress record of `source`, the source constant of a module.
inline Record Trace(const char* source, unsigned long line = __builtin_LINE()) {
  return {kTraceLevel, source, line, kUnknownMethod};
}

}  // namespace Qov::Log
