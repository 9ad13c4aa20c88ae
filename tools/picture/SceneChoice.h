#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "Qov/Ryx/Tree.h"
#include "picture/ModelView.h"
#include "picture/PictureRequest.h"
#include "picture/Scene.h"

namespace Qov::Tools {

/// Scenes that an image shows, at most.
inline constexpr std::size_t kMostScenes = 100;

/// The scenes of a model that a request chooses. They refer to the tree.
struct ModelScenes {
  std::vector<Scene> mScenes;  ///< By result, then by step.
  std::shared_ptr<MeshCache> mpMeshes;
  std::vector<std::string> mNotes;
  bool mIsComplete = true;  ///< False if a chosen geometry or result cannot be drawn.
};

/// Returns a scene for each chosen result and each chosen step that has it; with `onlyFirst`, the
/// first of them. Stops at the first scene above kMostScenes. Raises ElementNotFound for a result
/// that no part has at points or cells, and the errors of ChooseContent.
ModelScenes ChooseScenes(const QovRyx::Tree& tree, const PictureRequest& request,
                         const ModelView& view, bool onlyFirst);

}  // namespace Qov::Tools
