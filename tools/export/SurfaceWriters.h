#pragma once

#include <string>

#include "export/VtmWriter.h"

namespace Qov::Tools {

/// Writes the outer surface of all parts as a binary STL file: 80 bytes of text, the number of
/// triangles as u32, and for each triangle its normal, three points (12 floats) and a u16 of 0.
/// The notes count what is left out: lines, points, triangles with a coordinate that is not finite,
/// results, node sets. Raises OutOfBounds for more than 2^32 - 1 triangles.
void WriteStl(const ExportTask& task, const std::string& path, OutputSet& outputs);

/// Writes the outer surface of all parts as a binary PLY file: the points that triangles use, the
/// triangles. Points have the number of their part, from 0; comments have the names of the parts.
/// Faces do not, because some readers know no other property of faces than their points. Leaves out
/// and notes the same as WriteStl. Raises OutOfBounds for more than 2^31 - 1 points.
void WritePly(const ExportTask& task, const std::string& path, OutputSet& outputs);

}  // namespace Qov::Tools
