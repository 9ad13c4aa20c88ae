#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "SafeOutput.h"
#include "export/ExportContent.h"
#include "export/ExportSets.h"

namespace Qov::Tools {

/// Writes geometries as one VTK unstructured grid (.vtu): XML with raw appended data, 64-bit
/// headers, blocks compressed by zlib. The points and cells of several parts follow one another.
/// Parts share points if their coordinates, ids and node sets are the same and no results sit on
/// their points. Where a part does not have a result, the value is NaN, or 0 if it holds integers.
/// The cell array "Part" has the number of each cell's part; the field data "part NAME" has the
/// number of the part with that name. Appends notes for the user to `notes`.
///
/// Reads each mesh and each result once. Memory is bounded by the largest mesh, one array, and a
/// block of 64 KiB for each array of the grid.
///
/// Raises MismatchError for a geometry without a sound mesh, the errors of reading, and WriteError.
void WriteVtu(const std::vector<const ExportPart*>& parts, ExportSets& sets, MeshCache& meshes,
              std::vector<std::string>& notes, SafeOutput& output);

}  // namespace Qov::Tools
