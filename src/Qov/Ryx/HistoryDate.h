#pragma once

#include <string>

namespace QovRyx {

/// Returns the date of a history entry as "Sat Nov 21 09:45:38 2026 CET", in English whatever the
/// locale is: the local time now, or the time that the environment variable SOURCE_DATE_EPOCH holds
/// (seconds since 1970), in UTC. An empty variable counts as unset. Raises MiscellaneousError for
/// any other text in it.
std::string FormatHistoryDate();

}  // namespace QovRyx
