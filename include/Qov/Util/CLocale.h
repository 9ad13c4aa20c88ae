#pragma once

#include <locale.h>

#include "Qov/Export.h"

namespace Qov::Util {

/// Returns the C locale, for functions like strtod_l: what is read and written must not depend on
/// the locale that the host program has set.
QOV_EXPORT locale_t GetCLocale();

}  // namespace Qov::Util
