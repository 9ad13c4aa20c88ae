#include "picture/Difference.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

#include "Plural.h"
#include "Qov/Util/Raise.h"
#include "Terminal.h"

namespace Qov::Tools {
namespace {

using QovMesh::Placement;

[[noreturn]] void RaiseMismatch(const std::string& text) {
  Util::Raise("tools/picture/Difference", Util::Exception::ErrorType::MismatchError,
              "the models cannot be compared: " + text);
}

const ExportPart& FindOther(const Scene& other, const ExportPart& part) {
  const auto found = std::find_if(
      other.mContent.mParts.begin(), other.mContent.mParts.end(), [&](const ExportPart& candidate) {
        return candidate.mName == part.mName && candidate.mGroups == part.mGroups;
      });
  if (found == other.mContent.mParts.end()) {
    RaiseMismatch("the second one has no geometry " + Escape(part.mName, {}));
  }
  return *found;
}

void CheckMeshes(const ExportPart& part, const QovMesh::Mesh& mesh, const QovMesh::Mesh& other) {
  const auto check = [&](std::uint64_t first, std::uint64_t second, const char* noun) {
    if (first == second) return;
    RaiseMismatch(fmt::format("geometry {} has {} in the first and {} in the second",
                              Escape(part.mName, {}), Plural(first, noun), second));
  };
  check(mesh.GetNumPoints(), other.GetNumPoints(), "point");
  check(mesh.GetNumCells(), other.GetNumCells(), "cell");
  if (QovMesh::HaveEqualCells(mesh, other)) return;
  RaiseMismatch("the cells of geometry " + Escape(part.mName, {}) + " differ");
}

/// Returns the length of the differences of vectors.
ResultScalars LoadLengths(const ExportPart& part, const ExportResult& result,
                          const ExportPart& otherPart, const ExportResult& other) {
  ResultScalars scalars;
  std::vector<double> sums;
  for (std::size_t k = 0; k < result.mWidth; ++k) {
    scalars = LoadScalars(part, &result, k);
    const ResultScalars second = LoadScalars(otherPart, &other, k);
    sums.resize(scalars.mValues.size());
    for (std::size_t i = 0; i < sums.size(); ++i) {
      sums[i] += std::pow(double{second.mValues[i]} - scalars.mValues[i], 2);
    }
  }
  for (std::size_t i = 0; i < sums.size(); ++i) {
    scalars.mValues[i] = static_cast<float>(std::sqrt(sums[i]));
  }
  return scalars;
}

ResultScalars LoadDifference(const ExportPart& part, const ExportPart& otherPart,
                             const std::string& name, const Component& component) {
  const ExportResult* result = FindPlacedResult(part, name);
  const ExportResult* other = FindPlacedResult(otherPart, name);
  if (result == nullptr && other == nullptr) return {};
  if (result == nullptr || other == nullptr || result->mPlacement != other->mPlacement ||
      result->mWidth != other->mWidth ||
      result->mpVariable->mValues.GetNumElements() != other->mpVariable->mValues.GetNumElements()) {
    RaiseMismatch(fmt::format("result {} of geometry {} has another size or is missing in the {}",
                              Escape(name, {}), Escape(part.mName, {}),
                              result == nullptr ? "first" : "second"));
  }
  if (!component && result->mWidth > 1) return LoadLengths(part, *result, otherPart, *other);
  ResultScalars scalars = LoadScalars(part, result, component);
  const ResultScalars second = LoadScalars(otherPart, other, component);
  for (std::size_t i = 0; i < scalars.mValues.size(); ++i) {
    scalars.mValues[i] = static_cast<float>(double{second.mValues[i]} - double{scalars.mValues[i]});
  }
  return scalars;
}

/// Returns the mean of the points of a cell.
Triple CentreOf(const QovMesh::Mesh& mesh, std::span<const float> points, std::uint64_t cell) {
  Triple centre{};
  for (const QovMesh::CellRun& run : mesh.mRuns) {
    if (cell < run.mFirstCell || cell >= run.mFirstCell + run.mNumCells) continue;
    const std::uint64_t first = run.mFirstNode + (cell - run.mFirstCell) * run.mNumNodes;
    for (std::uint64_t i = first; i < first + run.mNumNodes; ++i) {
      for (std::size_t k = 0; k < 3; ++k) {
        centre[k] += double{points[3 * std::size_t{mesh.mNodes[i]} + k]} / run.mNumNodes;
      }
    }
  }
  return centre;
}

}  // namespace

std::string DescribePlace(const LargestDifference& largest) {
  const std::string part = Escape(largest.mPart, {});
  if (largest.mHasId) {
    return fmt::format("{} {} of {}", largest.mIsCell ? "element" : "node", largest.mId, part);
  }
  return fmt::format("{} {} (from 0) of {}", largest.mIsCell ? "cell" : "point", largest.mId, part);
}

void ShowDifference(Scene& scene, ScenePainter& painter, const Scene& other,
                    MeshCache& otherMeshes) {
  if (scene.mContent.mParts.size() != other.mContent.mParts.size()) {
    RaiseMismatch(fmt::format("the first has {} chosen geometries and the second {}",
                              scene.mContent.mParts.size(), other.mContent.mParts.size()));
  }
  for (const ExportPart& part : scene.mContent.mParts) {
    CheckMeshes(part, painter.LoadMesh(part), otherMeshes.Get(FindOther(other, part)));
  }
  otherMeshes.Clear();
  const Component component = scene.mComponent;
  const std::string name = scene.mResult;
  scene.mLoadScalars = [&other, component, name](const ExportPart& part) {
    return LoadDifference(part, FindOther(other, part), name, component);
  };
}

std::optional<LargestDifference> FindLargestDifference(const Scene& scene, ScenePainter& painter,
                                                       double scale) {
  std::optional<LargestDifference> largest;
  for (std::size_t i = 0; i < scene.mContent.mParts.size(); ++i) {
    if (scene.mLooks[i].mIsHidden) continue;
    const ExportPart& part = scene.mContent.mParts[i];
    const ResultScalars scalars = scene.mLoadScalars(part);
    std::optional<std::size_t> position;
    for (std::size_t k = 0; k < scalars.mValues.size(); ++k) {
      const double value = scalars.mValues[k];
      if (!std::isfinite(value)) continue;
      if (largest && std::abs(value) <= std::abs(largest->mValue)) continue;
      if (!largest) largest.emplace();
      largest->mValue = value;
      position = k;
    }
    if (!position) continue;
    const QovMesh::Mesh& mesh = painter.LoadMesh(part);
    const std::span<const float> points = painter.PlacePoints(scene, i, scale, mesh);
    largest->mPart = part.mName;
    largest->mIsCell = scalars.mPlacement == Placement::Cell;
    const auto& ids = largest->mIsCell ? mesh.mElementIds : mesh.mNodeIds;
    largest->mHasId = !ids.empty();
    largest->mId = ids.empty() ? static_cast<std::uint32_t>(*position) : ids[*position];
    if (largest->mIsCell) {
      largest->mPlace = CentreOf(mesh, points, *position);
    } else {
      for (std::size_t k = 0; k < 3; ++k) largest->mPlace[k] = points[3 * *position + k];
    }
  }
  return largest;
}

}  // namespace Qov::Tools
