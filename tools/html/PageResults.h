#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "export/ExportContent.h"

namespace Qov::Tools {

/// One mesh of a part, and the steps that have it.
struct PartMesh {
  std::string mInstance;            ///< For ExportPart::mMeshInstance.
  std::vector<std::size_t> mSteps;  ///< All of them have positions in ExportContent::mSteps.
};

/// Returns the meshes of a part: one if all steps share it, or if there are no steps.
std::vector<PartMesh> ListMeshes(const ExportContent& content, const ExportPart& part);

/// The values of a result on one mesh of a part.
struct ResultField {
  std::size_t mPart = 0;  ///< Position in ExportContent::mParts.
  std::size_t mMesh = 0;  ///< Position in its meshes.
  std::optional<std::size_t> mStep;
  const ExportResult* mpResult = nullptr;
};

/// The results of all parts and steps that have the same name, unit, placement and width.
struct PageResult {
  std::string mName;
  std::string mUnit;  ///< From the attribute "unit"; empty if there is none.
  QovMesh::Placement mPlacement = QovMesh::Placement::Point;
  std::size_t mWidth = 1;
  const ExportResult* mpFirst = nullptr;  ///< One of them.
  std::vector<ResultField> mFields;
};

/// Groups the point and cell data of all parts, in the order of the model. Results of a part that
/// have the same name and step get different names. `meshes` are those of each part.
std::vector<PageResult> GroupResults(const ExportContent& content,
                                     const std::vector<std::vector<PartMesh>>& meshes);

}  // namespace Qov::Tools
