#pragma once

namespace Qov::Test {

/// True for builds with a sanitizer that needs terabytes of address space.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kIsSanitized = true;
#else
inline constexpr bool kIsSanitized = false;
#endif

/// True for builds without optimisation: they run fewer cases, because each takes much longer.
#ifdef NDEBUG
inline constexpr bool kIsSlow = false;
#else
inline constexpr bool kIsSlow = true;
#endif

}  // namespace Qov::Test
