#pragma once

#include <string>

#include "export/VtmWriter.h"

namespace Qov::Tools {

/// Writes EnSight Gold files in the form "C Binary": the case file at `path`, and beside it the
/// mesh (NAME.geo) and a file for each variable and step (NAME.VARIABLE.0000). The mesh is static.
/// Vectors stay vectors; results of another width become a scalar for each component, NAME_1, ...;
/// integers become floats. Ids are written if every geometry has them. The names of files and
/// variables have letters, digits and underscores only. The steps have the times 0, 1, ... unless
/// all their times are known and different. The notes tell what is changed and what is left out:
/// field data, node sets, cells that are sets of points, meshes of further steps.
///
/// Raises OutOfBounds for more than 2^31 - 1 points or cells.
void WriteEnsight(const ExportTask& task, const std::string& path, OutputSet& outputs);

}  // namespace Qov::Tools
