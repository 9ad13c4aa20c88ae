#pragma once

#include <string>

#include "export/VtmWriter.h"

namespace Qov::Tools {

/// Writes the mesh arrays and the results of all parts as a NumPy archive (.npz): an uncompressed
/// ZIP file of .npy files, "GROUP/GEOMETRY/NAME.npy". Arrays have the shape (items, width), or
/// (items,) if the width is 1. The mesh arrays are those of the model. "VTK cell types" is derived,
/// and so is "VTK connectivity", which is written if it differs from "Connectivity". Names that are
/// equal become "NAME 2", ... and are noted.
void WriteNpz(const ExportTask& task, const std::string& path, OutputSet& outputs);

/// Writes a table as comma-separated values. If a point result is chosen, or no result at all, its
/// rows are the points: node id, x, y, z, and a column for each component of each point result.
/// Else its rows are the cells: element id, x, y, z of the centre, and the cell results. The
/// columns "part" and "id" come first; an id that the model does not have is the position, from 1.
/// Floats are the shortest numbers that read back as they are. A field is empty if the part does
/// not have the result. Names that a spreadsheet takes for formulas begin with an apostrophe. The
/// notes tell which results and node sets are left out, and what is changed.
void WriteCsv(const ExportTask& task, const std::string& path, OutputSet& outputs);

}  // namespace Qov::Tools
