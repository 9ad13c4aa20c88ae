#pragma once

#include "check/ModelContent.h"
#include "check/StreamCursor.h"

namespace Qov::Tools {

/// Checks the four pieces of a node set at the cursor in the heavy stream, and moves the cursor
/// after them. Throws EndReached at the end of the stream.
void CheckSetPieces(StreamCursor& cursor, const StoredNode& node, Findings& findings);

/// Moves the cursor after the pieces without a check.
void PassOverSetPieces(StreamCursor& cursor);

}  // namespace Qov::Tools
