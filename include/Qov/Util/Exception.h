#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <exception>

#include "Qov/Export.h"
#include "Qov/Util/FileContext.h"

namespace Qov::Util {

/// The error type of the system: a type, a description, the place where it was raised and a report.
///
/// It must be thrown by the functions of Raise.h, which log the same text first.
class QOV_EXPORT Exception : public std::exception, public FileContext {
 public:
  enum class ErrorType : std::uint32_t {
    MemoryAllocationError = 0,
    OutOfBounds = 1,
    UnknownVersion = 2,
    NotInitialized = 3,
    ElementExists = 4,
    ElementNotFound = 5,
    InvalidMethod = 6,
    InvalidEnumeration = 7,
    InvalidObject = 8,
    ReadError = 9,
    WriteError = 10,
    FormatNotSupported = 11,
    BadCasting = 12,
    NotImplemented = 13,
    MismatchError = 14,
    SystemError = 15,
    MiscellaneousError = 16,
    ZeroLength = 17,
    ModelError = 18,
    StateError = 19,
    Reserved = 20,
    InvalidException = 21,
  };

  static constexpr std::uint16_t kLevel = 2000;
  static constexpr std::size_t kDescriptionSize = 5120;
  static constexpr std::size_t kMessageSize = 5632;

  /// Uses the text of `type` as the description.
  Exception(ErrorType type, const char* file, unsigned long line, const char* method);
  Exception(ErrorType type, const char* description, const char* file, unsigned long line,
            const char* method);

  using FileContext::SetCause;

  /// Returns the report, which has several lines.
  const char* what() const noexcept override { return mMessage.data(); }
  virtual ErrorType GetType() const { return mType; }
  /// Returns the description, cut to kDescriptionSize bytes.
  virtual const char* GetLogMessage() const { return mDescription.data(); }

  std::uint16_t GetLevel() const { return kLevel; }
  const char* GetFile() const { return mFile; }
  unsigned long GetLine() const { return mLine; }

  /// Returns the text of an error type.
  static const char* GetDescription(const ErrorType& type);

 private:
  void FormatMessage();

  ErrorType mType;
  std::array<char, kDescriptionSize + 1> mDescription;  // the last byte stays zero
  const char* mFile;
  unsigned long mLine;
  const char* mMethod;
  std::time_t mTime;
  std::array<char, kMessageSize> mMessage;
};

}  // namespace Qov::Util
