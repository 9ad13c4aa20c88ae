#include "check/ResultCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <string_view>
#include <unordered_map>

#include "merge/ArrayNames.h"

namespace Qov::Tools {
namespace {

using QovRyx::IsMeshBase;
using QovRyx::kConnectivity;
using QovRyx::kCoordinates;
using QovRyx::kElementIds;
using QovRyx::kNodeIds;
using QovRyx::kPolylength;
using QovRyx::SplitName;

std::uint64_t CountTuples(const StoredVariable& values) {
  return values.GetNumElements() / std::max<std::uint64_t>(values.mWidth, 1);
}

/// The numbers of points and of elements of a geometry. A merge can leave several meshes in one
/// geometry, so there may be more than one number of each.
struct MeshCounts {
  std::set<std::uint64_t> mPoints;
  std::set<std::uint64_t> mElements;
  std::uint64_t mMostCorners = 0;

  /// Returns true if a result of `count` tuples fits. If the number of elements is unknown, accepts
  /// any number up to the number of their corners.
  bool Fits(std::uint64_t count) const {
    return mPoints.contains(count) || mElements.contains(count) ||
           (mElements.empty() && count <= mMostCorners);
  }
};

void AddCount(std::string_view base, std::uint64_t count, MeshCounts& counts) {
  if (base == kCoordinates) counts.mPoints.insert(count);
  if (base == kPolylength || base == kElementIds) counts.mElements.insert(count);
  if (base == kConnectivity) counts.mMostCorners = std::max(counts.mMostCorners, count);
}

MeshCounts CountMeshes(const StoredNode& geometry, ResultLinks& links) {
  MeshCounts counts;
  for (const StoredVariable& variable : geometry.mVariables) {
    const StoredVariable* values = links.FindOwner(variable);
    if (values == nullptr) continue;
    AddCount(SplitName(variable.mName).mBase, CountTuples(*values), counts);
  }
  return counts;
}

/// Returns true for arrays whose length defines the number of points or elements or does not depend
/// on it.
bool IsMeshArray(std::string_view base) {
  return IsMeshBase(base) && base != kNodeIds && base != kElementIds;
}

std::string CountsText(const std::set<std::uint64_t>& counts) {
  if (counts.empty()) return "an unknown number of";
  return counts.size() == 1 ? fmt::format("{}", *counts.begin())
                            : fmt::format("{} to {}", *counts.begin(), *counts.rbegin());
}

void CheckCounts(const StoredNode& geometry, ResultLinks& links, Findings& findings) {
  const MeshCounts mesh = CountMeshes(geometry, links);
  if (mesh.mPoints.empty()) return;
  for (std::size_t i = 0; i < geometry.mVariables.size(); ++i) {
    const StoredVariable& variable = geometry.mVariables[i];
    if (IsMeshArray(SplitName(variable.mName).mBase)) continue;
    const StoredVariable* values = links.FindOwner(variable);
    if (values == nullptr || values->GetNumElements() == 0) continue;
    const std::uint64_t count = CountTuples(*values);
    if (mesh.Fits(count)) continue;
    findings.Warning(
        "result-count", geometry.At({}, i),
        fmt::format("It has {} tuples, but the geometry has {} points and {} elements.", count,
                    CountsText(mesh.mPoints), CountsText(mesh.mElements)));
  }
}

void CheckNames(const StoredNode& geometry, Findings& findings) {
  std::unordered_map<std::string_view, std::size_t> first;
  for (std::size_t i = 0; i < geometry.mVariables.size(); ++i) {
    const auto [other, isNew] = first.emplace(geometry.mVariables[i].mName, i);
    if (isNew) continue;
    findings.Warning("result-name", geometry.At({}, i),
                     fmt::format("Result {} has the same name; lookups by name find only that one.",
                                 other->second));
  }
}

}  // namespace

void CheckResults(const ModelContent& model, ResultLinks& links, Findings& findings) {
  for (const StoredNode& node : model.mNodes) {
    CheckNames(node, findings);
    CheckCounts(node, links, findings);
  }
}

}  // namespace Qov::Tools
