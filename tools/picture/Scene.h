#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "export/ExportContent.h"
#include "mesh/OuterSurface.h"
#include "picture/Camera.h"
#include "picture/ColourScale.h"
#include "picture/Rasteriser.h"
#include "picture/ResultScalars.h"

namespace Qov::Tools {

/// The look of a part.
struct PartLook {
  Colour mColour{};
  bool mIsHidden = false;
  Triple mOffset{};  ///< Added to its points.
};

/// The parts of a model at one step, coloured by a result or by part.
struct Scene {
  ExportContent mContent;        ///< Its results are those that the scene uses.
  std::vector<PartLook> mLooks;  ///< One for each part.
  std::string mResult;           ///< ExportResult::mName; empty for colours of parts.
  Component mComponent;
  std::string mStep;    ///< Its name; empty if the model has no steps.
  std::string mDeform;  ///< ExportResult::mName; empty for no deformation.
  bool mEdges = false;
  bool mSmooth = false;
  /// Returns the values that colour a part: those of the result, or a difference.
  std::function<ResultScalars(const ExportPart&)> mLoadScalars;
};

/// What has to be known of all scenes before the first one is drawn.
struct SceneExtent {
  Box mBox;
  ScalarRange mRange;
  double mLargestShift = 0;   ///< Length of the longest displacement.
  bool mLacksValues = false;  ///< Some parts, points or cells have no finite value.

  void Include(const SceneExtent& other);
};

/// Numbers of what was drawn of a part.
struct DrawnPart {
  std::uint64_t mNumTriangles = 0;
  std::uint64_t mNumLines = 0;
  std::uint64_t mNumPoints = 0;  ///< Points that were drawn as such.
  bool mHasValues = false;       ///< It is coloured by the result.
};

/// Sets the loader of values to that of the result.
void LoadResultValues(Scene& scene);

/// Returns a name for the component that is shown, such as "magnitude", "x" or "SXX"; empty for
/// results that have only one.
std::string DescribeComponent(const ExportResult& result, const Component& component);

/// Returns the text attribute "unit" of a result; empty without one.
std::string FindUnit(const ExportResult& result);

/// Returns the first result of that name at points or cells; null if no part has one.
const ExportResult* FindSceneResult(const Scene& scene, const std::string& name);

/// Reads and draws the parts of the scenes of a model, one mesh at a time.
class ScenePainter {
 public:
  explicit ScenePainter(std::shared_ptr<MeshCache> meshes) : mpMeshes(std::move(meshes)) {}

  /// Measures the parts that are not hidden. The box contains the points that cells use, displaced
  /// `scale` times. Raises the errors of reading, and MismatchError for a result that cannot
  /// deform.
  SceneExtent Measure(const Scene& scene, double scale);

  /// Reads the only part of a scene and finds its surface. Call it before the Rasteriser is made:
  /// finding a surface, the cache of blocks, which is cleared, and the samples of a large image
  /// take most of the memory. Does nothing for scenes of several parts, whose meshes often share
  /// arrays.
  void Prepare(const Scene& scene, double scale, std::vector<std::string>& notes);

  /// Draws the scene and returns an item for each part. `colours` is for scenes with a result. Adds
  /// notes about what is not drawn.
  std::vector<DrawnPart> Draw(const Scene& scene, double scale, const ColourScale& colours,
                              Rasteriser& rasteriser, std::vector<std::string>& notes);

  /// Valid until the mesh of another part is needed.
  const QovMesh::Mesh& LoadMesh(const ExportPart& part) { return mpMeshes->Get(part); }
  /// Returns the points of a part where they are drawn. Valid until the next call.
  const std::vector<float>& PlacePoints(const Scene& scene, std::size_t part, double scale,
                                        const QovMesh::Mesh& mesh);
  /// Frees the mesh and the surface that are kept.
  void Clear();

 private:
  /// A part of a scene whose data are kept.
  struct Key {
    const Scene* mpScene = nullptr;
    std::size_t mPart = 0;
    double mScale = 0;
    friend bool operator==(const Key&, const Key&) = default;
  };
  const ResultScalars& LoadScalars(const Scene& scene, std::size_t part);
  bool HasSurface(const ExportPart& part) const;
  const QovMesh::Surface& FindSurface(const ExportPart& part, const QovMesh::Mesh& mesh,
                                      std::vector<std::string>& notes);
  std::shared_ptr<MeshCache> mpMeshes;
  // The surface of the last part, because the scenes of a sheet often share their mesh.
  const QovRyx::Geometry* mpSurfaceGeometry = nullptr;
  std::string mSurfaceInstance;
  QovMesh::Surface mSurface;
  Key mScalarsKey;
  ResultScalars mScalars;
  Key mPlacedKey;
  std::vector<float> mPlaced;  ///< The points of a part that is moved or deformed.
};

}  // namespace Qov::Tools
