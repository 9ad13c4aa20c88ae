#include "export/ExportSets.h"

#include <algorithm>
#include <set>
#include <utility>

#include "NodeFilter.h"
#include "export/UniqueNames.h"
#include "mesh/MeshArrays.h"
#include "mesh/SetMasks.h"

namespace Qov::Tools {
namespace {

/// Returns the array of node ids of a part; null if it has none for each point.
const QovRyx::NumericArray* FindNodeIds(const ExportPart& part) {
  const QovMesh::MeshArrays arrays(*part.mpGeometry);
  const auto* variable = arrays.Find(QovRyx::kNodeIds, part.mMeshInstance);
  const std::uint64_t numPoints = arrays.Count(part.mMeshInstance).mNumPoints;
  if (variable == nullptr || variable->mValues.GetNumElements() != numPoints) return nullptr;
  return &variable->mValues;
}

/// Removes the numbers that are ids of points.
void RemoveKnown(const QovMesh::SetMasks& ids, std::vector<std::uint32_t>& numbers) {
  std::erase_if(numbers,
                [&](std::uint32_t number) { return ids.CountKnown(std::span(&number, 1)) != 0; });
}

bool IsChosen(const std::vector<std::string>& patterns, const std::string& name) {
  return patterns.empty() || std::any_of(patterns.begin(), patterns.end(), [&](const auto& word) {
           return word == name || MatchesPattern(name, word);
         });
}

}  // namespace

const std::vector<QovRyx::NodeSets::Set>& ExportSets::LoadNode(std::uint32_t id) {
  if (mLoadedId == id) return mLoaded;
  mLoadedId = 0;
  const auto& node = dynamic_cast<const QovRyx::NodeSets&>(*mTree.GetNodes().GetReqNode(id).mData);
  mLoaded = node.GetSets();
  std::erase_if(mLoaded, [&](const auto& set) { return !IsChosen(mContent.mSetNames, set.mName); });
  mLoadedId = id;
  return mLoaded;
}

const ExportSets::Verdict& ExportSets::Judge(std::uint32_t id) {
  const auto [entry, isNew] = mVerdicts.try_emplace(id);
  Verdict& verdict = entry->second;
  if (!isNew) return verdict;
  std::vector<std::vector<std::uint32_t>> unknown;
  for (const auto& set : LoadNode(id)) unknown.push_back(set.mValues);
  std::set<const QovRyx::DataLoader*> seen;  // geometries often share their points
  for (const ExportPart& part : mContent.mParts) {
    if (std::find(part.mSetNodes.begin(), part.mSetNodes.end(), id) == part.mSetNodes.end()) {
      continue;
    }
    if (verdict.mFirstPart == 0) verdict.mFirstPart = part.mId;
    const QovRyx::NumericArray* array = FindNodeIds(part);
    if (array == nullptr) continue;
    const auto* loader = array->GetLoader().get();
    if (loader != nullptr && !seen.insert(loader).second) continue;
    std::vector<std::uint32_t> ids;
    array->GetValues(ids);
    const QovMesh::SetMasks masks(ids);
    for (auto& numbers : unknown) RemoveKnown(masks, numbers);
  }
  for (const auto& numbers : unknown) verdict.mIsMask.push_back(numbers.empty());
  return verdict;
}

void ExportSets::Clear() {
  mLoadedId = 0;
  mLoaded = {};
}

std::vector<ExportSet> ExportSets::Load(const ExportPart& part) {
  std::vector<ExportSet> sets;
  UniqueNames names;
  for (const std::uint32_t id : part.mSetNodes) {
    const Verdict& verdict = Judge(id);
    const auto& loaded = LoadNode(id);
    for (std::size_t i = 0; i < loaded.size(); ++i) {
      std::string name = names.Make(loaded[i].mName);
      if (!verdict.mIsMask[i] && part.mId != verdict.mFirstPart) continue;
      sets.push_back({std::move(name), loaded[i].mValues, verdict.mIsMask[i]});
    }
  }
  return sets;
}

}  // namespace Qov::Tools
