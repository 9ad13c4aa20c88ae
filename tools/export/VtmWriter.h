#pragma once

#include <string>
#include <vector>

#include "SafeOutput.h"
#include "export/ExportContent.h"
#include "export/ExportSets.h"

namespace Qov::Tools {

/// Input of the writers of formats, and their reports.
struct ExportTask {
  const QovRyx::Tree& mTree;
  const ExportContent& mContent;
  const QovMesh::KindChoices& mKinds;
  std::vector<std::string>& mNotes;
  ResultCounts& mResultsLeftOut;  ///< Results that the format does not hold.
};

/// Writes geometries as a VTK multiblock file (.vtm): groups are nested blocks, geometries are .vtu
/// files in a folder beside it, which has its name without the ending. Raises the errors of
/// WriteVtu.
void WriteVtm(const ExportTask& task, const std::string& path, OutputSet& outputs);

/// Writes a collection (.pvd) of one .vtm for each step. They are in a folder beside it, which has
/// its name without the ending. The times of the steps are their numbers, from 0, if one of them
/// has no time or if two have the same one. Raises the errors of WriteVtu.
void WritePvd(const ExportTask& task, const std::string& path, OutputSet& outputs);

}  // namespace Qov::Tools
