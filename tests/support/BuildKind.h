#pragma once

namespace Qov::Test {

/// Sanitizers take terabytes of address space.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kIsSanitized = true;
#else
inline constexpr bool kIsSanitized = false;
#endif

/// All builds but the optimised one take many times the time: they get fewer of many.
#ifdef NDEBUG
inline constexpr bool kIsSlow = false;
#else
inline constexpr bool kIsSlow = true;
#endif

}  // namespace Qov::Test
