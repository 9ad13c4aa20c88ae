#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "SafeOutput.h"
#include "export/ExportContent.h"
#include "export/ExportSets.h"

namespace Qov::Tools {

/// Writes geometries as one VTK unstructured grid (.vtu): XML with raw appended data, 64-bit
/// headers, blocks compressed by zlib. Of several parts the points and cells follow one another; a
/// result that a part does not have is NaN there, or 0 if it holds integers. Appends to `notes`
/// what has to be said about it.
///
/// Raises MismatchError for a geometry without a sound mesh, the errors of reading, and WriteError.
void WriteVtu(const std::vector<const ExportPart*>& parts, ExportSets& sets, MeshCache& meshes,
              std::vector<std::string>& notes, SafeOutput& output);

}  // namespace Qov::Tools
