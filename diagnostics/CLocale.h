#pragma once

#include <locale.h>  // NOLINT(modernize-deprecated-headers): <clocale> has no locale_t

namespace Qov::Util {

/// Returns the C locale, for functions like strtod_l, because reading and writing must not depend
/// on the locale that the host program has set.
locale_t GetCLocale();

}  // namespace Qov::Util
