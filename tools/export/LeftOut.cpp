#include "export/LeftOut.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <string_view>
#include <vector>

#include "Plural.h"
#include "Terminal.h"
#include "merge/ArrayNames.h"
#include "mesh/MeshArrays.h"

namespace Qov::Tools {
namespace {

/// Returns the instance parts of the mesh arrays of chosen steps.
std::set<std::string_view> FindMeshInstances(const ExportContent& content,
                                             const QovRyx::Geometry& geometry) {
  std::set<std::string_view> instances;
  for (const auto& variable : geometry.GetVariables()) {
    const QovRyx::ArrayName name = QovRyx::SplitName(variable.mName);
    if (QovRyx::IsMeshBase(name.mBase) && IsChosen(content, name.mInstance)) {
      instances.insert(name.mInstance);
    }
  }
  return instances;
}

/// Returns true if the arrays of two meshes of a geometry are equal. Reads those that are stored
/// apart.
bool HaveEqualMeshes(const QovMesh::MeshArrays& arrays, std::string_view a, std::string_view b) {
  std::vector<std::uint32_t> values;
  std::vector<std::uint32_t> others;
  for (const auto base : QovMesh::kExportedArrays) {
    const auto* array = arrays.Find(base, a);
    const auto* other = arrays.Find(base, b);
    if (QovMesh::ShareValues(array, other)) continue;
    if (array == nullptr || other == nullptr) return false;
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
    for (const ExportResult& result : part.mResults) {
      if (isWritten(result)) continue;
      ++task.mResultsLeftOut[static_cast<std::size_t>(result.mPlacement)];
      ++count;
    }
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
    const QovMesh::MeshArrays arrays(*part.mpGeometry);
    std::uint64_t count = 0;
    for (const std::string_view instance : FindMeshInstances(task.mContent, *part.mpGeometry)) {
      if (!arrays.HasOwnMesh(instance, part.mMeshInstance)) continue;
      count += HaveEqualMeshes(arrays, part.mMeshInstance, instance) ? 0 : 1;
    }
    if (count == 0) continue;
    task.mNotes.push_back(
        fmt::format("geometry {}: not written: {} of other steps; all steps have that of {}",
                    Escape(part.mName, {}), count == 1 ? "1 mesh" : fmt::format("{} meshes", count),
                    part.mMeshInstance.empty() ? "no step" : Escape(part.mMeshInstance, {})));
  }
}

void NotePartElementsLeftOut(const ExportTask& task) {
  std::uint64_t count = 0;
  for (const ExportPart& part : task.mContent.mParts) {
    for (const auto& variable : part.mpGeometry->GetVariables()) {
      count += QovRyx::SplitName(variable.mName).mBase == QovRyx::kPartElements ? 1 : 0;
    }
  }
  if (count == 0) return;
  task.mNotes.push_back("not written: " + Plural(count, "array") +
                        " Part Elements; .npz files have them");
}

void NoteSetsLeftOut(const ExportTask& task) {
  const auto& parts = task.mContent.mParts;
  const bool hasSets = std::any_of(parts.begin(), parts.end(),
                                   [](const ExportPart& part) { return !part.mSetNodes.empty(); });
  if (hasSets) task.mNotes.push_back("not written: node sets");
}

}  // namespace Qov::Tools
