#include "export/ExportFormat.h"

#include <strings.h>

#include <array>
#include <filesystem>
#include <vector>

#include "Qov/Util/Raise.h"
#include "diagnostics/Printable.h"
#include "export/EnsightWriter.h"
#include "export/LeftOut.h"
#include "export/SurfaceWriters.h"
#include "export/TableWriters.h"
#include "export/VtuWriter.h"

namespace Qov::Tools {
namespace {

/// In the order of ExportFormat.
constexpr std::array<std::string_view, 9> kEndings = {".vtu", ".vtm", ".pvd", ".glb", ".stl",
                                                      ".ply", ".csv", ".npz", ".case"};
static_assert(kEndings.size() == static_cast<std::size_t>(ExportFormat::Case) + 1);

void WriteGrid(const ExportTask& task, const std::string& path, OutputSet& outputs) {
  std::vector<const ExportPart*> parts;
  for (const ExportPart& part : task.mContent.mParts) parts.push_back(&part);
  ExportSets sets(task.mTree, task.mContent);
  WriteVtu(parts, sets, *task.mContent.mpMeshes, task.mNotes, outputs.Open(path));
}

}  // namespace

ExportFormat FindExportFormat(const std::string& path) {
  const std::string ending = std::filesystem::path(path).extension();
  std::string known;
  for (std::size_t i = 0; i < kEndings.size(); ++i) {
    if (::strcasecmp(ending.c_str(), kEndings[i].data()) == 0) return static_cast<ExportFormat>(i);
    known += i == 0 ? "" : " ";
    known += kEndings[i];
  }
  Util::Raise("tools/export/ExportFormat", Util::Exception::ErrorType::FormatNotSupported,
              Util::Quote(path) + " has no ending of a known format; known are " + known);
}

std::string_view GetEnding(ExportFormat format) {
  return kEndings[static_cast<std::size_t>(format)];
}

StepLayout GetStepLayout(ExportFormat format) {
  if (format == ExportFormat::Pvd) return StepLayout::Meshes;
  return format == ExportFormat::Case ? StepLayout::Variables : StepLayout::Names;
}

void WriteExport(ExportFormat format, const ExportTask& task, const SurfaceColour& colour,
                 const std::string& path, OutputSet& outputs) {
  // The writers of the other formats read the meshes again; two meshes would take too much memory.
  if (format != ExportFormat::Vtu) task.mContent.mpMeshes->Clear();
  const bool hasOneMesh = format != ExportFormat::Pvd && format != ExportFormat::Npz;
  if (hasOneMesh) NoteMeshesLeftOut(task);
  if (format != ExportFormat::Npz) NotePartElementsLeftOut(task);
  switch (format) {
    case ExportFormat::Vtu:
      return WriteGrid(task, path, outputs);
    case ExportFormat::Vtm:
      return WriteVtm(task, path, outputs);
    case ExportFormat::Pvd:
      return WritePvd(task, path, outputs);
    case ExportFormat::Glb:
      return WriteGlb(task, colour, path, outputs);
    case ExportFormat::Stl:
      return WriteStl(task, path, outputs);
    case ExportFormat::Ply:
      return WritePly(task, path, outputs);
    case ExportFormat::Csv:
      return WriteCsv(task, path, outputs);
    case ExportFormat::Npz:
      return WriteNpz(task, path, outputs);
    case ExportFormat::Case:
      return WriteEnsight(task, path, outputs);
  }
}

}  // namespace Qov::Tools
