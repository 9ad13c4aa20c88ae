#pragma once

#include <string>

#include "export/VtmWriter.h"

namespace Qov::Tools {

/// Writes EnSight Gold files in the form "C Binary": the case file at `path`, and beside it the
/// mesh (NAME.geo) and a file for each variable and step (NAME.VARIABLE.0000). The mesh is static.
/// Vectors stay vectors; results of another width become a scalar for each component; integers
/// become floats. Field data, node sets and cells that are sets of points are left out and told in
/// the notes. The time of a step without one is its number, from 0.
void WriteEnsight(const ExportTask& task, const std::string& path, OutputSet& outputs);

}  // namespace Qov::Tools
