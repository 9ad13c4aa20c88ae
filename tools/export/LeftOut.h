#pragma once

#include <functional>
#include <string_view>

#include "export/VtmWriter.h"

namespace Qov::Tools {

/// Counts the results that a format does not hold, and adds a note with their number.
void NoteResultsLeftOut(const ExportTask& task,
                        const std::function<bool(const ExportResult&)>& isWritten);

/// Returns true if an array with this instance part is of a chosen step, or of all steps.
bool IsChosen(const ExportContent& content, std::string_view instance);

/// Adds a note for each geometry whose mesh differs between chosen steps; for formats that hold one
/// mesh.
void NoteMeshesLeftOut(const ExportTask& task);

/// Adds a note with the number of arrays "Part Elements", if there are any; for formats that do not
/// hold them.
void NotePartElementsLeftOut(const ExportTask& task);

/// Adds a note if there are node sets; for formats that do not hold them.
void NoteSetsLeftOut(const ExportTask& task);

}  // namespace Qov::Tools
