#include "picture/Scene.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <span>
#include <string_view>
#include <utility>
#include <variant>

#include "Qov/Util/Raise.h"
#include "Terminal.h"
#include "container/BlockCache.h"
#include "export/PartSurface.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;
using QovMesh::Placement;

constexpr const char* kSource = "tools/picture/Scene";

/// Returns an attribute that is a text; empty for any other.
std::string FindText(const ExportResult& result, std::string_view wanted) {
  for (const auto& [name, value] : result.mpVariable->mAttributes) {
    const auto* text = std::get_if<std::string>(&value);
    if (name == wanted && text != nullptr) return *text;
  }
  return {};
}

std::vector<std::string> SplitAtCommas(const std::string& text) {
  std::vector<std::string> words;
  std::size_t start = 0;
  for (std::size_t end = text.find(','); end != text.npos; end = text.find(',', start)) {
    words.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  words.push_back(text.substr(start));
  return words;
}

/// The displacements of a part: `mWidth` floats for each point.
struct Displacements {
  std::size_t mWidth = 0;
  std::vector<std::uint32_t> mBits;

  Triple At(std::size_t point) const {
    Triple shift{};
    for (std::size_t k = 0; k < mWidth; ++k) {
      const float value = std::bit_cast<float>(mBits[point * mWidth + k]);
      shift[k] = std::isfinite(value) ? value : 0;
    }
    return shift;
  }
};

Displacements LoadDisplacements(const ExportPart& part, const std::string& name) {
  const ExportResult* result = FindPlacedResult(part, name);
  if (result == nullptr) return {};
  if (result->mPlacement != Placement::Point || result->mIsUnsigned ||
      (result->mWidth != 2 && result->mWidth != 3)) {
    Util::Raise(kSource, ErrorType::MismatchError,
                fmt::format("result {} of {} cannot deform the part: it needs floats at points, 2 "
                            "or 3 components; choose another --deform",
                            Escape(result->mName, {}), Escape(part.mName, {})));
  }
  Displacements displacements{result->mWidth, {}};
  LoadValues(*result, displacements.mBits);
  return displacements;
}

bool IsPointCell(const QovMesh::CellRun& run) {
  return QovMesh::GetShape(run.mKind).mDimension == 0;
}

/// The points of a mesh that are drawn as such: those of cells that are points, or all points if
/// there are no cells.
struct LoosePoints {
  std::vector<float> mPlaces;
  std::vector<float> mValues;
};

LoosePoints CollectLoosePoints(const QovMesh::Mesh& mesh, std::span<const float> points,
                               const ResultScalars& scalars) {
  LoosePoints loose;
  const auto add = [&](std::size_t point, std::uint64_t cell) {
    loose.mPlaces.insert(loose.mPlaces.end(),
                         {points[3 * point], points[3 * point + 1], points[3 * point + 2]});
    if (scalars.mValues.empty()) return;
    const bool isOfCell = scalars.mPlacement == Placement::Cell;
    loose.mValues.push_back(scalars.mValues[isOfCell ? cell : point]);
  };
  if (mesh.GetNumCells() == 0 && scalars.mPlacement != Placement::Cell) {
    for (std::size_t point = 0; point < mesh.GetNumPoints(); ++point) add(point, 0);
  }
  for (const QovMesh::CellRun& run : mesh.mRuns) {
    if (!IsPointCell(run)) continue;
    for (std::uint64_t i = 0; i < run.mNumCells * run.mNumNodes; ++i) {
      add(mesh.mNodes[run.mFirstNode + i], run.mFirstCell + i / run.mNumNodes);
    }
  }
  return loose;
}

/// Includes each point that cells use once, because cells share most of them.
void IncludeUsedPoints(const QovMesh::Mesh& mesh, std::span<const float> points, Box& box) {
  std::vector<std::uint8_t> isUsed(mesh.GetNumPoints());
  for (const std::uint32_t point : mesh.mNodes) isUsed[point] = 1;
  for (std::size_t i = 0; i < isUsed.size(); ++i) {
    if (isUsed[i] != 0) box.IncludeAll(points.subspan(3 * i, 3));
  }
}

ValuesAt PlaceOf(const ResultScalars& scalars) {
  if (scalars.mValues.empty()) return ValuesAt::None;
  return scalars.mPlacement == Placement::Cell ? ValuesAt::Cell : ValuesAt::Point;
}

ShadedSurface MakeLook(const Scene& scene, std::size_t part) {
  ShadedSurface surface;
  surface.mColour = scene.mResult.empty() ? scene.mLooks[part].mColour : kNoValueColour;
  surface.mSmooth = scene.mSmooth;
  surface.mEdges = scene.mEdges;
  return surface;
}

}  // namespace

void SceneExtent::Include(const SceneExtent& other) {
  mBox.Include(other.mBox);
  mRange.Include(other.mRange.mLeast);
  mRange.Include(other.mRange.mGreatest);
  mLargestShift = std::max(mLargestShift, other.mLargestShift);
  mLacksValues |= other.mLacksValues;
}

void LoadResultValues(Scene& scene) {
  const Component component = scene.mComponent;
  const std::string name = scene.mResult;
  scene.mLoadScalars = [component, name](const ExportPart& part) {
    return LoadScalars(part, name.empty() ? nullptr : FindPlacedResult(part, name), component);
  };
}

std::string DescribeComponent(const ExportResult& result, const Component& component) {
  if (result.mWidth == 1) return {};
  if (!component) return "magnitude";
  const std::vector<std::string> names = SplitAtCommas(FindText(result, "components"));
  if (names.size() == result.mWidth) return names[*component];
  if (result.mWidth <= 3) return std::string(1, static_cast<char>('x' + *component));
  return fmt::format("{} of {}", *component + 1, result.mWidth);
}

std::string FindUnit(const ExportResult& result) { return FindText(result, "unit"); }

const ExportResult* FindSceneResult(const Scene& scene, const std::string& name) {
  for (const ExportPart& part : scene.mContent.mParts) {
    if (const ExportResult* result = FindPlacedResult(part, name)) return result;
  }
  return nullptr;
}

void ScenePainter::Clear() {
  mpMeshes->Clear();
  mpSurfaceGeometry = nullptr;
  mSurface = {};
  mScalarsKey = {};
  mScalars = {};
  mPlacedKey = {};
  mPlaced = {};
}

bool ScenePainter::HasSurface(const ExportPart& part) const {
  return mpSurfaceGeometry == part.mpGeometry && mSurfaceInstance == part.mMeshInstance;
}

const QovMesh::Surface& ScenePainter::FindSurface(const ExportPart& part, const QovMesh::Mesh& mesh,
                                                  std::vector<std::string>& notes) {
  if (HasSurface(part)) return mSurface;
  mpSurfaceGeometry = nullptr;
  mSurface = {};
  mSurface = FindPartSurface(mesh, part.mName, notes, SurfaceUse::Drawn);
  mpSurfaceGeometry = part.mpGeometry;
  mSurfaceInstance = part.mMeshInstance;
  return mSurface;
}

const std::vector<float>& ScenePainter::PlacePoints(const Scene& scene, std::size_t part,
                                                    double scale, const QovMesh::Mesh& mesh) {
  const Key key{&scene, part, scale};
  if (mPlacedKey == key) return mPlaced;
  const Triple& offset = scene.mLooks[part].mOffset;
  const Displacements shifts = scene.mDeform.empty() || scale == 0
                                   ? Displacements{}
                                   : LoadDisplacements(scene.mContent.mParts[part], scene.mDeform);
  if (shifts.mWidth == 0 && offset == Triple{}) return mesh.mPoints;
  mPlacedKey = {};
  mPlaced.resize(mesh.mPoints.size());
  for (std::size_t i = 0; i < mesh.GetNumPoints(); ++i) {
    const Triple shift = shifts.mWidth == 0 ? Triple{} : shifts.At(i);
    for (std::size_t k = 0; k < 3; ++k) {
      mPlaced[3 * i + k] =
          static_cast<float>(mesh.mPoints[3 * i + k] + offset[k] + scale * shift[k]);
    }
  }
  mPlacedKey = key;
  return mPlaced;
}

SceneExtent ScenePainter::Measure(const Scene& scene, double scale) {
  SceneExtent extent;
  for (std::size_t i = 0; i < scene.mContent.mParts.size(); ++i) {
    if (scene.mLooks[i].mIsHidden) continue;
    const ExportPart& part = scene.mContent.mParts[i];
    const QovMesh::Mesh& mesh = mpMeshes->Get(part);
    const std::vector<float>& points = PlacePoints(scene, i, scale, mesh);
    if (mesh.GetNumCells() == 0) extent.mBox.IncludeAll(points);
    IncludeUsedPoints(mesh, points, extent.mBox);
    const ResultScalars& scalars = LoadScalars(scene, i);
    extent.mRange.Include(scalars.mValues);
    extent.mLacksValues |=
        scalars.mValues.empty() || !std::all_of(scalars.mValues.begin(), scalars.mValues.end(),
                                                [](float value) { return std::isfinite(value); });
    if (scene.mDeform.empty()) continue;
    const Displacements shifts = LoadDisplacements(part, scene.mDeform);
    const std::size_t numPoints = shifts.mWidth == 0 ? 0 : mesh.GetNumPoints();
    for (std::size_t point = 0; point < numPoints; ++point) {
      const Triple shift = shifts.At(point);
      extent.mLargestShift =
          std::max(extent.mLargestShift, std::hypot(shift[0], shift[1], shift[2]));
    }
  }
  return extent;
}

void ScenePainter::Prepare(const Scene& scene, double scale, std::vector<std::string>& notes) {
  if (scene.mContent.mParts.size() != 1 || scene.mLooks[0].mIsHidden) return;
  const ExportPart& part = scene.mContent.mParts[0];
  const QovMesh::Mesh& mesh = mpMeshes->Get(part);
  LoadScalars(scene, 0);
  PlacePoints(scene, 0, scale, mesh);
  if (!HasSurface(part)) QovJbf::BlockCache::Instance().Clear();
  FindSurface(part, mesh, notes);
}

const ResultScalars& ScenePainter::LoadScalars(const Scene& scene, std::size_t part) {
  const Key key{&scene, part, 0};
  if (mScalarsKey == key) return mScalars;
  mScalarsKey = {};
  mScalars = scene.mLoadScalars(scene.mContent.mParts[part]);
  mScalarsKey = key;
  return mScalars;
}

std::vector<DrawnPart> ScenePainter::Draw(const Scene& scene, double scale,
                                          const ColourScale& colours, Rasteriser& rasteriser,
                                          std::vector<std::string>& notes) {
  std::vector<DrawnPart> drawn(scene.mContent.mParts.size());
  for (std::size_t i = 0; i < drawn.size(); ++i) {
    if (scene.mLooks[i].mIsHidden) continue;
    const ExportPart& part = scene.mContent.mParts[i];
    const QovMesh::Mesh& mesh = mpMeshes->Get(part);
    const QovMesh::Surface& found = FindSurface(part, mesh, notes);
    const std::vector<float>& points = PlacePoints(scene, i, scale, mesh);
    const ResultScalars& scalars = LoadScalars(scene, i);
    ShadedSurface surface = MakeLook(scene, i);
    surface.mPoints = points;
    surface.mTriangles = found.mTriangles;
    surface.mTriangleCells = found.mTriangleCells;
    surface.mTriangleEdges = found.mTriangleEdges;
    surface.mLines = found.mLines;
    surface.mLineCells = found.mLineCells;
    surface.mValuesAt = PlaceOf(scalars);
    surface.mValues = scalars.mValues;
    rasteriser.Draw(surface, &colours);
    const LoosePoints loose = CollectLoosePoints(mesh, points, scalars);
    if (!loose.mPlaces.empty()) {
      ShadedSurface cloud = MakeLook(scene, i);
      cloud.mPoints = loose.mPlaces;
      cloud.mDrawPoints = true;
      cloud.mValues = loose.mValues;
      cloud.mValuesAt = loose.mValues.empty() ? ValuesAt::None : ValuesAt::Point;
      rasteriser.Draw(cloud, &colours);
    }
    drawn[i].mNumTriangles = found.mTriangleCells.size();
    drawn[i].mNumLines = found.mLineCells.size();
    drawn[i].mNumPoints = loose.mPlaces.size() / 3;
    drawn[i].mHasValues = !scalars.mValues.empty();
  }
  return drawn;
}

}  // namespace Qov::Tools
