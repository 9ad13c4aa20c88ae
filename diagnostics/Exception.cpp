#include "Qov/Util/Exception.h"

#include <cstdio>
#include <cstring>

namespace Qov::Util {
namespace {

/// Returns the time as "Wed Jun 30 21:49:08 1993\n". The report needs the newline.
std::array<char, 32> FormatTime(std::time_t time) {
  std::array<char, 32> text{};
  if (ctime_r(&time, text.data()) == nullptr) text[0] = '\n';
  return text;
}

}  // namespace

// The switch has no default, so that the compiler reports an error type without a text.
const char* Exception::GetDescription(const ErrorType& type) {
  switch (type) {
    case ErrorType::MemoryAllocationError:
      return "Memory Allocation Error";
    case ErrorType::OutOfBounds:
      return "Out of Bounds";
    case ErrorType::UnknownVersion:
      return "Unknown Version";
    case ErrorType::NotInitialized:
      return "Not Initialized";
    case ErrorType::ElementExists:
      return "Element Exists";
    case ErrorType::ElementNotFound:
      return "Element Not Found";
    case ErrorType::InvalidMethod:
      return "Invalid Method";
    case ErrorType::InvalidEnumeration:
      return "Invalid Enumeration";
    case ErrorType::InvalidObject:
      return "Invalid Object";
    case ErrorType::ReadError:
      return "Read Error";
    case ErrorType::WriteError:
      return "Write Error";
    case ErrorType::FormatNotSupported:
      return "Format Not Supported";
    case ErrorType::BadCasting:
      return "Bad Casting";
    case ErrorType::NotImplemented:
      return "Not Implemented";
    case ErrorType::MismatchError:
      return "Mis-match Error";
    case ErrorType::SystemError:
      return "System Error";
    case ErrorType::MiscellaneousError:
      return "Miscelleneous Error";
    case ErrorType::ZeroLength:
      return "Zero Length";
    case ErrorType::ModelError:
      return "Model Error";
    case ErrorType::StateError:
      return "State Error";
    case ErrorType::Reserved:
      return "Reserved";
    case ErrorType::InvalidException:
      break;
  }
  return "Invalid Exception";
}

Exception::Exception(ErrorType type, const char* file, unsigned long line, const char* method)
    : Exception(type, GetDescription(type), file, line, method) {}

Exception::Exception(ErrorType type, const char* description, const char* file, unsigned long line,
                     const char* method)
    : mType(type),
      mDescription{},
      mFile(file),
      mLine(line),
      mMethod(method),
      mTime(std::time(nullptr)),
      mMessage{} {
  std::strncpy(mDescription.data(), description, kDescriptionSize);
  FormatMessage();
}

void Exception::FormatMessage() {
  std::snprintf(mMessage.data(), mMessage.size(),
                "Exception \"%s\" raised. \n"
                "%11s : %s \n%11s : %s \n%11s : %lu \n%11s : %s \n%11s : %s \n",
                GetDescription(mType), "Description", mDescription.data(), "File", mFile, "Line",
                mLine, "Method", mMethod, "Time", FormatTime(mTime).data());
}

}  // namespace Qov::Util
