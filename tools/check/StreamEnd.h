#pragma once

#include "check/ModelContent.h"
#include "check/StreamCursor.h"

namespace Qov::Tools {

/// Reports bytes from the cursor to the end of the stream. `item` is the term for the last item
/// before them, such as "record".
void ReportRest(const StreamCursor& cursor, const char* item, Findings& findings);

/// Does the same for a stream whose items belong to the nodes in their order. The bytes are an
/// error if nodes of unknown types may own some of them, because then every node may have the
/// items of another one.
void ReportRest(const StreamCursor& cursor, const ModelContent& model, const char* item,
                Findings& findings);

/// Reports that a check stopped because the stream ends, or cannot be read, at the cursor.
void ReportEnd(const StreamCursor& cursor, Place place, const char* item, Findings& findings);

}  // namespace Qov::Tools
