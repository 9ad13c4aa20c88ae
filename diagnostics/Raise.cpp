#include "Qov/Util/Raise.h"

#include <system_error>

#include "Qov/Log/Record.h"

namespace Qov::Util {
namespace {

/// What stands in reports where other systems name a function.
constexpr const char* kMethod = "<unknown>";

}  // namespace

void Raise(const char* source, Exception::ErrorType type, const std::string& description,
           unsigned long line) {
  Log::Record(Log::kErrorLevel, source, line, kMethod) << description;
  throw Exception(type, description.c_str(), source, line, kMethod);
}

void Raise(const char* source, Exception::ErrorType type, unsigned long line) {
  Raise(source, type, Exception::GetDescription(type), line);
}

void RaiseSystemFailure(const char* source, Exception::ErrorType type,
                        const std::string& description, int error, unsigned long line) {
  const std::string cause = std::generic_category().message(error);
  Log::Record(Log::kErrorLevel, source, line, kMethod) << description;
  Log::Record(Log::kErrorLevel, source, line, kMethod) << "The cause was: " << cause;
  Exception exception(type, description.c_str(), source, line, kMethod);
  exception.SetCause(cause);
  throw exception;
}

}  // namespace Qov::Util
