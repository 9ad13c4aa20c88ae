#pragma once

#include <string>

#include "export/VtmWriter.h"
#include "picture/ResultScalars.h"

namespace Qov::Tools {

/// The result that colours the surface.
struct SurfaceColour {
  std::string mResult;  ///< Name of a result as ExportResult has it; empty for one colour.
  Component mComponent;
};

/// Writes the outer surface of all parts as a binary glTF 2.0 file (.glb): a node for each group
/// and each part, lines too. The values of a result become places in a palette texture; the
/// material is not lit, so that the colours are those of the scale. The member "extras" of the
/// material has the range of the result. A triangle with a corner whose value is not finite is
/// grey. The notes count what is left out: cells that are points, triangles with a coordinate that
/// is not finite, other results, node sets.
///
/// Raises ElementNotFound if no part has the result, OutOfBounds if the file would pass 4 GiB.
void WriteGlb(const ExportTask& task, const SurfaceColour& colour, const std::string& path,
              OutputSet& outputs);

}  // namespace Qov::Tools
