#pragma once

namespace Qov {

/// Opens /dev/null for each standard stream that the caller closed, so that a file opened later
/// does not get its descriptor and receive messages. Writing to such a stream still fails. Call it
/// first.
void OccupyStandardStreams();

}  // namespace Qov
