#pragma once

namespace Qov {

/// Opens /dev/null for each standard stream that is closed, so that a file that is opened later
/// does not get its descriptor and receive messages. Writing to such a stream still fails. Must be
/// called before any file is opened.
void OccupyStandardStreams();

}  // namespace Qov
