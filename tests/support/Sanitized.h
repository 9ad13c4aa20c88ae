#pragma once

namespace Qov::Test {

/// Sanitizers take terabytes of address space, and many times the time.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kIsSanitized = true;
#else
inline constexpr bool kIsSanitized = false;
#endif

}  // namespace Qov::Test
