#pragma once

#include <array>
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

/// The options of the user.
struct ExportRequest {
  std::vector<std::string> mNodes;      ///< Names or ids; a chosen node includes its descendants.
  std::vector<std::uint32_t> mNodeIds;  ///< Used instead of mNodes unless it is empty.
  std::vector<std::string> mResults;    ///< Patterns of base names, or of whole names.
  std::vector<std::string> mSteps;      ///< Patterns of step names; else numbers, from 1.
  std::vector<std::string> mSetNames;   ///< Patterns of names of node sets.
  bool mSets = true;
  QovMesh::KindChoices mKinds;
  /// The results are base names, not patterns, and an empty list chooses none.
  bool mExactResults = false;
  const char* mVerb = "written";  ///< For messages: what happens to the content.
};

/// The way in which a format stores the steps of a model.
enum class StepLayout : std::uint8_t {
  Names,      ///< In the names of results, if there are several steps.
  Variables,  ///< Each variable has values for each step, on one mesh.
  Meshes,     ///< Each step has its own mesh and results.
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

/// Numbers of results by QovMesh::Placement.
using ResultCounts = std::array<std::uint64_t, 3>;

/// A geometry that is written.
struct ExportPart {
  std::uint32_t mId = 0;
  const QovRyx::Geometry* mpGeometry = nullptr;
  std::vector<std::string> mGroups;  ///< Names of the groups above it, the topmost first.
  std::string mName;
  std::string mMeshInstance;  ///< Which mesh of the geometry, if it has several; else empty.
  std::vector<ExportResult> mResults;
  std::vector<std::uint32_t> mSetNodes;  ///< Ids of the NodeSets that belong to it.
  std::uint64_t mNumPoints = 0;
  std::vector<QovMesh::KindDecision> mDecisions;  ///< Of the mesh, for reports.
};

/// Reads the meshes of parts and keeps the last one.
class MeshCache {
 public:
  explicit MeshCache(const QovMesh::KindChoices& kinds) : mKinds(kinds) {}
  const QovMesh::Mesh& Get(const ExportPart& part);
  void Clear();

 private:
  QovMesh::KindChoices mKinds;
  const QovRyx::Geometry* mpGeometry = nullptr;
  std::string mInstance;
  QovMesh::Mesh mMesh;
};

/// Everything that an export writes, and what it leaves out. Refers to the tree.
struct ExportContent {
  std::vector<ExportPart> mParts;
  std::vector<QovMesh::Step> mSteps;    ///< Those that are chosen.
  std::vector<std::string> mSetNames;   ///< Patterns of the chosen node sets; empty for all.
  std::vector<std::string> mNotes;      ///< Guesses, doubts, and parts that cannot be written.
  std::vector<std::string> mOmissions;  ///< What is not chosen or never exported, with the reason.
  std::shared_ptr<MeshCache> mpMeshes;  ///< Has the mesh that was checked last.
  bool mIsComplete = true;              ///< False if a chosen geometry or result cannot be written.
};

/// Finds what to write. Reads the meshes of all parts. A geometry whose mesh arrays contradict one
/// another is left out and noted.
///
/// Raises ElementNotFound if no word of a list matches anything or if there is nothing to write,
/// and the errors of reading.
ExportContent ChooseContent(const QovRyx::Tree& tree, const ExportRequest& request,
                            StepLayout layout);

/// Returns the content of one step: results of other steps are left out.
ExportContent TakeStep(const ExportContent& content, std::size_t step);

/// Reads the values of a result in the order of the file. Raises the errors of DataLoader::LoadTo,
/// and ReadError if there are fewer values than the result should have.
void LoadValues(const ExportResult& result, std::vector<std::uint32_t>& bits);

}  // namespace Qov::Tools
