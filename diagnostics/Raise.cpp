#include "Qov/Util/Raise.h"

#include <system_error>

#include "Qov/Log/Record.h"

namespace Qov::Util {
namespace {

using ErrorType = Exception::ErrorType;

constexpr const char* kWriteFailure = "Unable to write to file";

Exception WithCause(Exception exception, const std::string& cause) {
  exception.SetCause(cause);
  return exception;
}

}  // namespace

void Raise(const char* source, Exception::ErrorType type, const std::string& description,
           unsigned long line) {
  Log::Record(Log::kErrorLevel, source, line, Log::kUnknownMethod) << description;
  throw Exception(type, description.c_str(), source, line, Log::kUnknownMethod);
}

void Raise(const char* source, Exception::ErrorType type, unsigned long line) {
  Raise(source, type, Exception::GetDescription(type), line);
}

void RaiseSystemFailure(const char* source, Exception::ErrorType type,
                        const std::string& description, int error, unsigned long line) {
  const std::string cause = std::generic_category().message(error);
  Log::Record(Log::kErrorLevel, source, line, Log::kUnknownMethod) << description;
  Log::Record(Log::kErrorLevel, source, line, Log::kUnknownMethod) << "The cause was: " << cause;
  throw WithCause(Exception(type, description.c_str(), source, line, Log::kUnknownMethod), cause);
}

void RaiseOutOfMemory(const char* source, unsigned long line) {
  Raise(source, ErrorType::MemoryAllocationError, line);
}

void RaiseNotEnoughBytes(const char* source, unsigned long line) {
  Raise(source, ErrorType::OutOfBounds, "Not enough bytes in the block", line);
}

void RaiseElementNotFound(const char* source, unsigned long line) {
  Raise(source, ErrorType::ElementNotFound, line);
}

void RaiseReadError(const char* source, unsigned long line) {
  Raise(source, ErrorType::ReadError, "Unable to read from file", line);
}

void RaiseWriteError(const char* source, unsigned long line) {
  Raise(source, ErrorType::WriteError, kWriteFailure, line);
}

void RaiseWriteFailure(const char* source, int error, unsigned long line) {
  RaiseSystemFailure(source, ErrorType::WriteError, kWriteFailure, error, line);
}

}  // namespace Qov::Util
