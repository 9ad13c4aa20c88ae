#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "SafeOutput.h"
#include "export/ExportContent.h"
#include "export/GlbWriter.h"
#include "export/VtmWriter.h"

namespace Qov::Tools {

enum class ExportFormat : std::uint8_t { Vtu, Vtm, Pvd, Glb, Stl, Ply, Csv, Npz, Case };

/// Returns the format that the ending of the path names, in any case of letters. Raises
/// FormatNotSupported for any other ending.
ExportFormat FindExportFormat(const std::string& path);

/// Returns the ending, such as ".vtu".
std::string_view GetEnding(ExportFormat format);

StepLayout GetStepLayout(ExportFormat format);

/// Writes the content. `colour` is for .glb only. Appends to the notes of the task. Raises the
/// errors of the writer of the format. The caller commits `outputs`.
void WriteExport(ExportFormat format, const ExportTask& task, const SurfaceColour& colour,
                 const std::string& path, OutputSet& outputs);

}  // namespace Qov::Tools
