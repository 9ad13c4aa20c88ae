#pragma once

#include "Qov/Jbf/JbFile.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Reads the stream "View Points": replaces the view point and the sequencer of `tree` and appends
/// the paths. Raises ElementNotFound if the stream does not exist.
void ReadViewPaths(QovJbf::JbFile& file, Tree& tree);

/// Appends the same to the stream "View Points" of a file that is being written.
void WriteViewPaths(QovJbf::JbFile& file, const Tree& tree);

}  // namespace QovRyx
