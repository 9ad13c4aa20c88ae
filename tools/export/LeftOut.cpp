#include "export/LeftOut.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "Plural.h"
#include "Terminal.h"
#include "mesh/ArrayNames.h"
#include "mesh/MeshArrays.h"

namespace Qov::Tools {
namespace {

/// Returns true if the arrays of two meshes of a geometry are equal.
bool HasSameMesh(const QovRyx::Geometry& geometry, std::string_view a, std::string_view b) {
  const QovMesh::MeshArrays arrays(geometry);
  std::vector<std::uint32_t> values;
  std::vector<std::uint32_t> others;
  for (const auto base : {QovMesh::kCoordinates, QovMesh::kPolylength, QovMesh::kConnectivity}) {
    const auto* array = arrays.Find(base, a);
    const auto* other = arrays.Find(base, b);
    if (array == other) continue;
    if (array == nullptr || other == nullptr) return false;
    const auto& loader = array->mValues.GetLoader();
    if (loader != nullptr && loader == other->mValues.GetLoader()) continue;
    array->mValues.GetValues(values);
    other->mValues.GetValues(others);
    if (values != others) return false;
  }
  return true;
}

}  // namespace

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
    std::uint64_t count = 0;
    for (const auto& variable : part.mpGeometry->GetVariables()) {
      const QovMesh::ArrayName name = QovMesh::SplitName(variable.mName);
      if (name.mBase != QovMesh::kCoordinates || name.mInstance == part.mMeshInstance) continue;
      if (!IsChosen(task.mContent, name.mInstance)) continue;
      count += HasSameMesh(*part.mpGeometry, part.mMeshInstance, name.mInstance) ? 0 : 1;
    }
    if (count == 0) continue;
    task.mNotes.push_back(
        fmt::format("geometry {}: not written: {} of other steps; all steps have that of {}",
                    Escape(part.mName, {}), count == 1 ? "1 mesh" : fmt::format("{} meshes", count),
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
