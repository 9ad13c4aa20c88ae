#pragma once

#include <string>

namespace QovRyx {

/// Returns the date of a history entry as "Sat Nov 21 09:45:38 2026 CET", in English in every
/// locale. It is the current local time, or the time in UTC that the environment variable
/// SOURCE_DATE_EPOCH holds (seconds since 1970). An empty variable counts as unset. Raises
/// MiscellaneousError if the variable holds any other text.
std::string FormatHistoryDate();

}  // namespace QovRyx
