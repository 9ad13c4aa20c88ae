#pragma once

#include "Qov/Export.h"

namespace Qov::Util {

/// Prints the text and the place of a failed assertion and stops the process.
[[noreturn]] QOV_EXPORT void FailAssertion(const char* text, const char* file, int line);

}  // namespace Qov::Util

/// Checks an assumption about the program, in all builds. A failure is a mistake in the code, not a
/// bad input.
#define QOV_ASSERT(condition)                          \
  (static_cast<bool>(condition) ? static_cast<void>(0) \
                                : ::Qov::Util::FailAssertion(#condition, __FILE__, __LINE__))
