#pragma once

#include <memory>
#include <optional>
#include <string>

#include "picture/Scene.h"

namespace Qov::Tools {

/// The place where two models differ most.
struct LargestDifference {
  double mValue = 0;
  std::string mPart;
  bool mIsCell = false;
  std::uint32_t mId =
      0;  ///< Of the node or the element; its position, from 0, if there are no ids.
  bool mHasId = false;
  Triple mPlace{};  ///< In the first model, deformed as in the picture. The centre of a cell.
};

/// Returns "node 17 of Skin"; without ids, "point 16 (from 0) of Skin".
std::string DescribePlace(const LargestDifference& largest);

/// Colours the parts of `scene` by the values of `other` minus its own values: the difference of a
/// component, or the length of the difference of vectors. Parts of the same name belong together.
/// Raises MismatchError if the parts, their cells, or their numbers of points or values differ, and
/// the errors of reading. `other` has to exist as long as the scene. `painter` and `otherMeshes`
/// read the meshes; the latter is left empty.
void ShowDifference(Scene& scene, ScenePainter& painter, const Scene& other,
                    MeshCache& otherMeshes);

/// Finds the largest absolute difference of a scene that shows one; nothing without a finite one.
/// Reads the meshes and values once more. `painter` places the points.
std::optional<LargestDifference> FindLargestDifference(const Scene& scene, ScenePainter& painter,
                                                       double scale);

}  // namespace Qov::Tools
