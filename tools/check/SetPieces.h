#pragma once

#include "check/ModelContent.h"
#include "check/StreamCursor.h"

namespace Qov::Tools {

/// Checks the four pieces of a node set at the cursor's place in the heavy stream, which it leaves
/// behind them. Throws EndReached where the stream ends.
void CheckSetPieces(StreamCursor& cursor, const StoredNode& node, Findings& findings);

/// Leaves the cursor behind the pieces without looking at them.
void PassOverSetPieces(StreamCursor& cursor);

}  // namespace Qov::Tools
