#pragma once

#include <string>

#include "Qov/Export.h"
#include "Qov/Util/Exception.h"

/// The functions that raise errors. Each logs the text at level 2000 and throws an Exception with
/// the same text and position.
///
/// `source` is the path of the header of the failing code without its ending, such as
/// "include/Qov/Jbf/Block". Each module has one constant for it. The line is the caller's.
namespace Qov::Util {

[[noreturn]] QOV_EXPORT void Raise(const char* source, Exception::ErrorType type,
                                   const std::string& description,
                                   unsigned long line = __builtin_LINE());

/// Raises an error whose description is the text of its type.
[[noreturn]] QOV_EXPORT void Raise(const char* source, Exception::ErrorType type,
                                   unsigned long line = __builtin_LINE());

/// Raises the error of a failed system call. The exception's cause is the text for `error`, a value
/// of errno. The cause is logged on a separate line.
[[noreturn]] QOV_EXPORT void RaiseSystemFailure(const char* source, Exception::ErrorType type,
                                                const std::string& description, int error,
                                                unsigned long line = __builtin_LINE());

/// Raises MemoryAllocationError.
[[noreturn]] QOV_EXPORT void RaiseOutOfMemory(const char* source,
                                              unsigned long line = __builtin_LINE());

/// Raises OutOfBounds, "Not enough bytes in the block".
[[noreturn]] QOV_EXPORT void RaiseNotEnoughBytes(const char* source,
                                                 unsigned long line = __builtin_LINE());

/// Raises ElementNotFound.
[[noreturn]] QOV_EXPORT void RaiseElementNotFound(const char* source,
                                                  unsigned long line = __builtin_LINE());

/// Raises ReadError, "Unable to read from file".
[[noreturn]] QOV_EXPORT void RaiseReadError(const char* source,
                                            unsigned long line = __builtin_LINE());

/// Raises WriteError, "Unable to write to file".
[[noreturn]] QOV_EXPORT void RaiseWriteError(const char* source,
                                             unsigned long line = __builtin_LINE());

/// Raises WriteError, "Unable to write to file", with the cause `error`, a value of errno.
[[noreturn]] QOV_EXPORT void RaiseWriteFailure(const char* source, int error,
                                               unsigned long line = __builtin_LINE());

}  // namespace Qov::Util
