#pragma once

#include <string>

#include "Qov/Export.h"
#include "Qov/Util/Exception.h"

namespace Qov::Util {

/// The one door through which errors leave: logs the text at level 2000, then throws an
/// Exception with the same text and position.
///
/// `source` is the path of the header that the failing code belongs to, without its ending
/// ("include/Qov/Jbf/Block"); each module holds it in one constant. The line is the caller's.
[[noreturn]] QOV_EXPORT void Raise(const char* source, Exception::ErrorType type,
                                   const std::string& description,
                                   unsigned long line = __builtin_LINE());

/// The same, with the table text of `type` as the description.
[[noreturn]] QOV_EXPORT void Raise(const char* source, Exception::ErrorType type,
                                   unsigned long line = __builtin_LINE());

/// Raises and logs the error of a failed system call. The exception's cause is the text for
/// `error`, a value of errno; it is logged on a separate line.
[[noreturn]] QOV_EXPORT void RaiseSystemFailure(const char* source, Exception::ErrorType type,
                                                const std::string& description, int error,
                                                unsigned long line = __builtin_LINE());

}  // namespace Qov::Util
