#include "export/LeftOut.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>

#include "Plural.h"
#include "Terminal.h"
#include "mesh/ArrayNames.h"

namespace Qov::Tools {

void NoteResultsLeftOut(const ExportTask& task,
                        const std::function<bool(const ExportResult&)>& isWritten) {
  std::uint64_t count = 0;
  for (const ExportPart& part : task.mContent.mParts) {
    for (const ExportResult& result : part.mResults) count += isWritten(result) ? 0 : 1;
  }
  if (count != 0) task.mNotes.push_back("not written: " + Plural(count, "result"));
}

bool IsChosen(const ExportContent& content, std::string_view instance) {
  const auto& steps = content.mSteps;
  return instance.empty() || steps.empty() ||
         std::any_of(steps.begin(), steps.end(),
                     [&](const QovMesh::Step& step) { return step.mName == instance; });
}

void NoteMeshesLeftOut(const ExportTask& task) {
  for (const ExportPart& part : task.mContent.mParts) {
    const auto& arrays = part.mpGeometry->GetVariables();
    const auto isOther = [&](const QovRyx::Geometry::VarStruct& array) {
      const QovMesh::ArrayName name = QovMesh::SplitName(array.mName);
      return name.mBase == QovMesh::kCoordinates && name.mInstance != part.mMeshInstance &&
             IsChosen(task.mContent, name.mInstance);
    };
    if (std::none_of(arrays.begin(), arrays.end(), isOther)) continue;
    task.mNotes.push_back(fmt::format(
        "geometry {}: its mesh changes with the steps; the one of {} is written for all of them",
        Escape(part.mName, {}),
        part.mMeshInstance.empty() ? "no step" : Escape(part.mMeshInstance, {})));
  }
}

void NoteSetsLeftOut(const ExportTask& task) {
  const auto& parts = task.mContent.mParts;
  const bool hasSets = std::any_of(parts.begin(), parts.end(),
                                   [](const ExportPart& part) { return !part.mSetNodes.empty(); });
  if (hasSets) task.mNotes.push_back("not written: node sets");
}

}  // namespace Qov::Tools
