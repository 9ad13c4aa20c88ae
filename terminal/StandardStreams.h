#pragma once

namespace Qov {

/// Opens /dev/null for each standard stream that the caller closed, so that no file that is opened
/// later takes its place and receives messages. Writing there still fails. Call it first.
void OccupyStandardStreams();

}  // namespace Qov
