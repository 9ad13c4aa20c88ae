#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Qov/Ryx/Tree.h"
#include "mesh/Mesh.h"
#include "mesh/ResultPlacement.h"
#include "mesh/Steps.h"

namespace Qov::Tools {

/// What the user asks for.
struct ExportRequest {
  std::vector<std::string> mNodes;    ///< Names or ids; a chosen node brings what is below it.
  std::vector<std::string> mResults;  ///< Patterns of base names, or of whole names.
  std::vector<std::string> mSteps;    ///< Patterns of step names, or their numbers, from 1.
  bool mSets = true;
  QovMesh::KindChoices mKinds;
};

/// A result that is written.
struct ExportResult {
  const QovRyx::Geometry::VarStruct* mpVariable = nullptr;
  std::string mName;                 ///< Without instance part, or with " (LC1)" after it.
  std::optional<std::size_t> mStep;  ///< Position in the table of steps; nothing for all steps.
  QovMesh::Placement mPlacement = QovMesh::Placement::Field;
  bool mIsUnsigned = false;
  std::size_t mWidth = 1;
};

/// A geometry that is written.
struct ExportPart {
  std::uint32_t mId = 0;
  const QovRyx::Geometry* mpGeometry = nullptr;
  std::vector<std::string> mGroups;  ///< Names of the groups above it, the topmost first.
  std::string mName;
  std::string mMeshInstance;  ///< Which mesh of the geometry, if it has several; else empty.
  std::vector<ExportResult> mResults;
  std::vector<std::uint32_t> mSetNodes;  ///< Ids of the NodeSets that belong to it.
};

/// Everything that an export writes, and what it leaves out. Refers to the tree.
struct ExportContent {
  std::vector<ExportPart> mParts;
  std::vector<QovMesh::Step> mSteps;    ///< Those that are chosen.
  std::vector<std::string> mNotes;      ///< Guesses and doubts.
  std::vector<std::string> mOmissions;  ///< What is not written, with the reason.
};

/// Finds what to write. `separateSteps`: each step becomes a file, so results keep their base
/// names; else a result of one step among several has the step in its name.
///
/// Raises ElementNotFound if a word of the request fits nothing.
ExportContent ChooseContent(const QovRyx::Tree& tree, const ExportRequest& request,
                            bool separateSteps);

/// Returns the content of one step: results of other steps are left out.
ExportContent TakeStep(const ExportContent& content, std::size_t step);

/// Reads the values of a result in the order of the file. Raises the errors of DataLoader::LoadTo,
/// and ReadError if a link leads to no values.
void LoadValues(const ExportResult& result, std::vector<std::uint32_t>& bits);

/// Reads meshes of parts and keeps the one that was read last.
class MeshCache {
 public:
  explicit MeshCache(const QovMesh::KindChoices& kinds) : mKinds(kinds) {}
  const QovMesh::Mesh& Get(const ExportPart& part);

 private:
  QovMesh::KindChoices mKinds;
  const QovRyx::Geometry* mpGeometry = nullptr;
  std::string mInstance;
  QovMesh::Mesh mMesh;
};

}  // namespace Qov::Tools
