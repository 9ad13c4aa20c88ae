#include "export/ExportSets.h"

#include <algorithm>
#include <utility>

#include "export/UniqueNames.h"
#include "mesh/MeshArrays.h"
#include "mesh/SetMasks.h"

namespace Qov::Tools {
namespace {

std::vector<std::uint32_t> LoadNodeIds(const ExportPart& part) {
  const QovMesh::MeshArrays arrays(*part.mpGeometry);
  std::vector<std::uint32_t> ids;
  const auto* variable = arrays.Find(QovMesh::kNodeIds, part.mMeshInstance);
  const std::uint64_t numPoints = arrays.Count(part.mMeshInstance).mNumPoints;
  if (variable != nullptr && variable->mValues.GetNumElements() == numPoints) {
    variable->mValues.GetValues(ids);
  }
  return ids;
}

/// Removes the numbers that are ids of points of the part.
void RemoveKnown(const QovMesh::SetMasks& ids, std::vector<std::uint32_t>& numbers) {
  std::erase_if(numbers,
                [&](std::uint32_t number) { return ids.CountKnown(std::span(&number, 1)) != 0; });
}

}  // namespace

const ExportSets::Loaded& ExportSets::LoadNode(std::uint32_t id) {
  if (const auto found = mLoaded.find(id); found != mLoaded.end()) return found->second;
  mLoaded.clear();
  Loaded& loaded = mLoaded[id];
  const auto& node = dynamic_cast<const QovRyx::NodeSets&>(*mTree.GetNodes().GetReqNode(id).mData);
  std::vector<std::vector<std::uint32_t>> unknown;
  for (auto& set : node.GetSets()) {
    unknown.push_back(set.mValues);
    loaded.mSets.push_back({set.mName, std::move(set.mValues), false});
  }
  for (const ExportPart& part : mContent.mParts) {
    if (std::find(part.mSetNodes.begin(), part.mSetNodes.end(), id) == part.mSetNodes.end()) {
      continue;
    }
    if (loaded.mFirstPart == 0) loaded.mFirstPart = part.mId;
    const QovMesh::SetMasks ids(LoadNodeIds(part));
    for (auto& numbers : unknown) RemoveKnown(ids, numbers);
  }
  for (std::size_t i = 0; i < unknown.size(); ++i) loaded.mSets[i].mIsMask = unknown[i].empty();
  return loaded;
}

std::vector<ExportSet> ExportSets::Load(const ExportPart& part) {
  std::vector<ExportSet> sets;
  UniqueNames names;
  for (const std::uint32_t id : part.mSetNodes) {
    const Loaded& loaded = LoadNode(id);
    for (const ExportSet& set : loaded.mSets) {
      if (!set.mIsMask && part.mId != loaded.mFirstPart) continue;
      sets.push_back(set);
      sets.back().mName = names.Make(set.mName);
    }
  }
  return sets;
}

}  // namespace Qov::Tools
