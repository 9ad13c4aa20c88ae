#include "html/PageResults.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "export/UniqueNames.h"
#include "mesh/MeshArrays.h"
#include "picture/Scene.h"

namespace Qov::Tools {
namespace {

using QovMesh::Placement;

/// Makes the names of the results of one part different from one another in each step.
class StepNames {
 public:
  explicit StepNames(const ExportPart& part) {
    for (const ExportResult& result : part.mResults) {
      if (!result.mStep) mNames[&result] = mShared.Make(result.mName);
    }
    for (const ExportResult& result : part.mResults) {
      if (!result.mStep) continue;
      UniqueNames& names = mSteps.try_emplace(*result.mStep, mShared).first->second;
      mNames[&result] = names.Make(result.mName);
    }
  }
  const std::string& Get(const ExportResult& result) const { return mNames.at(&result); }

 private:
  UniqueNames mShared;  ///< Of the results of all steps.
  std::map<std::size_t, UniqueNames> mSteps;
  std::map<const ExportResult*, std::string> mNames;
};

bool HasStep(const PartMesh& mesh, const std::optional<std::size_t>& step) {
  return !step || mesh.mSteps.empty() ||
         std::find(mesh.mSteps.begin(), mesh.mSteps.end(), *step) != mesh.mSteps.end();
}

}  // namespace

std::vector<PartMesh> ListMeshes(const ExportContent& content, const ExportPart& part) {
  const QovMesh::MeshArrays arrays(*part.mpGeometry);
  std::vector<PartMesh> meshes;
  for (std::size_t step = 0; step < content.mSteps.size(); ++step) {
    const std::string& name = content.mSteps[step].mName;
    const bool isOwn = arrays.HasOwnMesh(name, part.mMeshInstance);
    const std::string& instance = isOwn ? name : part.mMeshInstance;
    auto mesh = std::find_if(meshes.begin(), meshes.end(), [&](const PartMesh& known) {
      return known.mInstance == instance || !arrays.HasOwnMesh(instance, known.mInstance);
    });
    if (mesh == meshes.end()) mesh = meshes.insert(mesh, {instance, {}});
    mesh->mSteps.push_back(step);
  }
  if (meshes.empty()) meshes.push_back({part.mMeshInstance, {}});
  return meshes;
}

std::vector<PageResult> GroupResults(const ExportContent& content,
                                     const std::vector<std::vector<PartMesh>>& meshes) {
  using Key = std::tuple<std::string, std::string, Placement, std::size_t>;
  std::map<Key, std::size_t> positions;
  std::vector<PageResult> results;
  for (std::size_t part = 0; part < content.mParts.size(); ++part) {
    const StepNames names(content.mParts[part]);
    for (const ExportResult& result : content.mParts[part].mResults) {
      if (result.mPlacement == Placement::Field) continue;
      const Key key{names.Get(result), FindUnit(result), result.mPlacement, result.mWidth};
      const auto [found, isNew] = positions.try_emplace(key, results.size());
      if (isNew) {
        results.push_back(
            {names.Get(result), FindUnit(result), result.mPlacement, result.mWidth, &result, {}});
      }
      for (std::size_t mesh = 0; mesh < meshes[part].size(); ++mesh) {
        if (!HasStep(meshes[part][mesh], result.mStep)) continue;
        results[found->second].mFields.push_back({part, mesh, result.mStep, &result});
      }
    }
  }
  return results;
}

}  // namespace Qov::Tools
