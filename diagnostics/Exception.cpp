#include "Qov/Util/Exception.h"

#include <cstdio>
#include <cstring>

namespace Qov::Util {
namespace {

/// The texts by the value of their kind.
constexpr std::array<const char*, 22> kDescriptions = {
    "Memory Allocation Error",
    "Out of Bounds",
    "Unknown Version",
    "Not Initialized",
    "Element Exists",
    "Element Not Found",
    "Invalid Method",
    "Invalid Enumeration",
    "Invalid Object",
    "Read Error",
    "Write Error",
    "Format Not Supported",
    "Bad Casting",
    "Not Implemented",
    "Mis-match Error",
    "System Error",
    "Miscelleneous Error",
    "Zero Length",
    "Model Error",
    "State Error",
    "Reserved",
    "Invalid Exception",
};

/// The time as "Wed Jun 30 21:49:08 1993\n". The newline belongs to the report.
std::array<char, 32> FormatTime(std::time_t time) {
  std::array<char, 32> text{};
  if (ctime_r(&time, text.data()) == nullptr) text[0] = '\n';
  return text;
}

}  // namespace

const char* Exception::GetDescription(const ErrorType& type) {
  const auto index = static_cast<std::size_t>(type);
  return index < kDescriptions.size() ? kDescriptions[index] : kDescriptions.back();
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
