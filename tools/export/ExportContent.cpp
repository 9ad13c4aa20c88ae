#include "export/ExportContent.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <utility>

#include "NodeFilter.h"
#include "Qov/Ryx/ValueOwners.h"
#include "Qov/Util/Raise.h"
#include "Terminal.h"
#include "TreeWalk.h"
#include "export/UniqueNames.h"
#include "mesh/ArrayNames.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;
using QovRyx::Geometry;

constexpr const char* kSource = "tools/export/ExportContent";

[[noreturn]] void RaiseNotFound(const std::string& text) {
  Util::Raise(kSource, ErrorType::ElementNotFound, text);
}

std::string Shown(std::string_view name) { return Escape(name, {}); }

/// Words of the command line, and which of them fitted something.
class Patterns {
 public:
  explicit Patterns(const std::vector<std::string>& words)
      : mWords(words), mHasFitted(words.size(), false) {}

  /// Returns true if there are no words, or if one of the names fits one of them.
  bool Accept(std::initializer_list<std::string> names) {
    bool accepted = mWords.empty();
    for (std::size_t i = 0; i < mWords.size(); ++i) {
      for (const std::string& name : names) {
        if (name != mWords[i] && !MatchesPattern(name, mWords[i])) continue;
        mHasFitted[i] = true;
        accepted = true;
      }
    }
    return accepted;
  }

  /// Raises ElementNotFound for a word that fitted nothing.
  void CheckAllFitted(const std::string& noun) const {
    for (std::size_t i = 0; i < mWords.size(); ++i) {
      if (!mHasFitted[i]) RaiseNotFound("no " + noun + " fits " + mWords[i]);
    }
  }

 private:
  const std::vector<std::string>& mWords;
  std::vector<bool> mHasFitted;
};

class ContentBuilder {
 public:
  ContentBuilder(const QovRyx::Tree& tree, const ExportRequest& request, bool separateSteps)
      : mTree(tree),
        mRequest(request),
        mSeparateSteps(separateSteps),
        mTable(tree.GetNodes()),
        mRule(tree.GetNodes()),
        mOwners(tree.GetNodes()),
        mNodePatterns(request.mNodes),
        mResultPatterns(request.mResults) {}

  ExportContent Build() {
    ChooseSteps();
    AddParts();
    mNodePatterns.CheckAllFitted("node");
    mResultPatterns.CheckAllFitted("result");
    if (mContent.mParts.empty()) RaiseNotFound("the model has no geometry with coordinates");
    AddSetNodes();
    for (const std::string& warning : mTable.GetWarnings()) Note(warning);
    return std::move(mContent);
  }

 private:
  void Note(std::string text) { mContent.mNotes.push_back(std::move(text)); }
  void Omit(std::string text) { mContent.mOmissions.push_back(std::move(text)); }

  void ChooseSteps() {
    Patterns patterns(mRequest.mSteps);
    const auto& steps = mTable.GetSteps();
    for (std::size_t i = 0; i < steps.size(); ++i) {
      if (!patterns.Accept({steps[i].mName, fmt::format("{}", i + 1)})) {
        Omit("step " + Shown(steps[i].mName) + ": not chosen");
        continue;
      }
      mChosenSteps[i] = mContent.mSteps.size();
      mContent.mSteps.push_back(steps[i]);
    }
    patterns.CheckAllFitted("step");
  }

  /// Walks the tree from the top, so that a chosen node brings what is below it.
  void AddParts() {
    std::vector<std::string> groups;  // by depth; empty for nodes that are not groups
    std::vector<bool> isChosen;       // by depth
    TreeWalk walk(mTree.GetNodes());
    while (const auto step = walk.Next()) {
      groups.resize(step->mDepth);
      isChosen.resize(step->mDepth);
      if (step->mEntry == nullptr || step->mAgain || step->mEntry->mData == nullptr) {
        groups.emplace_back();
        isChosen.push_back(false);
        continue;
      }
      const QovRyx::Node& node = *step->mEntry->mData;
      const bool fits = mNodePatterns.Accept({node.GetName(), fmt::format("{}", step->mId)});
      isChosen.push_back(fits || (!isChosen.empty() && isChosen.back()));
      const auto* group = dynamic_cast<const QovRyx::Group*>(&node);
      groups.push_back(group == nullptr ? "" : node.GetName());
      if (group != nullptr) CheckPlacement(*group);
      if (const auto* geometry = dynamic_cast<const Geometry*>(&node)) {
        if (isChosen.back()) {
          AddPart(step->mId, *geometry, groups);
        } else {
          Omit("geometry " + Shown(node.GetName()) + ": not chosen");
        }
      }
    }
  }

  void CheckPlacement(const QovRyx::Group& group) {
    const QovRyx::Group plain("");
    if (group.mTranslation == plain.mTranslation && group.mRotation == plain.mRotation &&
        group.mScale == plain.mScale) {
      return;
    }
    Omit("group " + Shown(group.GetName()) + ": its placement is not applied to coordinates");
  }

  void AddPart(std::uint32_t id, const Geometry& geometry, const std::vector<std::string>& groups) {
    const QovMesh::MeshArrays arrays(geometry);
    ExportPart part;
    part.mId = id;
    part.mpGeometry = &geometry;
    part.mName = geometry.GetName();
    for (const std::string& group : groups) {
      if (!group.empty()) part.mGroups.push_back(group);
    }
    part.mMeshInstance = FindMeshInstance(geometry);
    if (arrays.Find(QovMesh::kCoordinates, part.mMeshInstance) == nullptr) {
      Omit("geometry " + Shown(part.mName) + ": it has no array Coordinates");
      return;
    }
    const QovMesh::MeshCounts counts = arrays.Count(part.mMeshInstance);
    UniqueNames names;
    for (const auto& variable : geometry.GetVariables()) {
      if (!QovMesh::IsMeshBase(QovMesh::SplitName(variable.mName).mBase)) {
        AddResult(variable, counts, names, part);
      }
    }
    mContent.mParts.push_back(std::move(part));
  }

  /// Returns the instance part of the first coordinates of a chosen step; empty for a mesh that all
  /// steps share.
  std::string FindMeshInstance(const Geometry& geometry) const {
    for (const auto& variable : geometry.GetVariables()) {
      const QovMesh::ArrayName name = QovMesh::SplitName(variable.mName);
      if (name.mBase != QovMesh::kCoordinates) continue;
      if (name.mInstance.empty()) return {};
      const bool isChosen =
          std::any_of(mContent.mSteps.begin(), mContent.mSteps.end(),
                      [&](const QovMesh::Step& step) { return step.mName == name.mInstance; });
      if (isChosen || mContent.mSteps.empty()) return std::string(name.mInstance);
    }
    return {};
  }

  std::string WhereText(const ExportPart& part, const Geometry::VarStruct& variable) const {
    return "result " + Shown(variable.mName) + " of " + Shown(part.mName);
  }

  void AddResult(const Geometry::VarStruct& variable, const QovMesh::MeshCounts& counts,
                 UniqueNames& names, ExportPart& part) {
    const QovMesh::ArrayName name = QovMesh::SplitName(variable.mName);
    if (!mResultPatterns.Accept({std::string(name.mBase), variable.mName})) {
      return Omit(WhereText(part, variable) + ": not chosen");
    }
    ExportResult result;
    result.mpVariable = &variable;
    if (const auto step = mTable.FindStep(part.mId, variable)) {
      const auto chosen = mChosenSteps.find(*step);
      if (chosen == mChosenSteps.end()) return;  // told once, with the step
      result.mStep = chosen->second;
    }
    if (variable.mLink.IsLinked() && variable.mValues.GetLoader() == nullptr) {
      return Omit(WhereText(part, variable) + ": its link leads to no values");
    }
    const auto decision = mRule.Decide(variable, counts);
    result.mPlacement = decision.mPlacement;
    if (!decision.mWarning.empty()) Note(WhereText(part, variable) + ": " + decision.mWarning);
    result.mIsUnsigned = mOwners.HoldUnsigned(variable);
    result.mWidth = std::max<std::size_t>(variable.mValues.GetWidth(), 1);
    result.mName = std::string(name.mBase);
    const bool needsStep = !mSeparateSteps && mContent.mSteps.size() > 1;
    if (needsStep && !name.mInstance.empty()) result.mName += fmt::format(" ({})", name.mInstance);
    if (!mSeparateSteps) result.mName = names.Make(result.mName);
    part.mResults.push_back(std::move(result));
  }

  /// A NodeSets node belongs to the geometries below its parent.
  void AddSetNodes() {
    if (!mRequest.mSets) return;
    const auto& nodes = mTree.GetNodes();
    for (const auto& [id, entry] : nodes) {
      if (dynamic_cast<const QovRyx::NodeSets*>(entry.mData.get()) == nullptr) continue;
      bool isUsed = false;
      for (ExportPart& part : mContent.mParts) {
        if (!IsBelow(part.mId, entry.mParent)) continue;
        part.mSetNodes.push_back(id);
        isUsed = true;
      }
      if (!isUsed) {
        Omit("node sets " + Shown(entry.mData->GetName()) + ": no chosen geometry is beside them");
      }
    }
  }

  bool IsBelow(std::uint32_t id, std::uint32_t ancestor) const {
    const auto& nodes = mTree.GetNodes();
    std::size_t stepsLeft = nodes.GetSize() + 1;  // parents of damaged trees may go round
    for (const auto* entry = nodes.FindNode(id); entry != nullptr && stepsLeft > 0; --stepsLeft) {
      if (entry->mParent == ancestor) return true;
      entry = nodes.FindNode(entry->mParent);
    }
    return false;
  }

  const QovRyx::Tree& mTree;
  const ExportRequest& mRequest;
  bool mSeparateSteps;
  QovMesh::StepTable mTable;
  QovMesh::PlacementRule mRule;
  QovRyx::ValueOwners mOwners;
  Patterns mNodePatterns;
  Patterns mResultPatterns;
  std::map<std::size_t, std::size_t> mChosenSteps;  ///< From the table to ExportContent::mSteps.
  ExportContent mContent;
};

}  // namespace

ExportContent ChooseContent(const QovRyx::Tree& tree, const ExportRequest& request,
                            bool separateSteps) {
  return ContentBuilder(tree, request, separateSteps).Build();
}

ExportContent TakeStep(const ExportContent& content, std::size_t step) {
  ExportContent taken;
  taken.mSteps = {content.mSteps[step]};
  for (const ExportPart& part : content.mParts) {
    ExportPart copy = part;
    const auto isOther = [&](const ExportResult& result) {
      return result.mStep && *result.mStep != step;
    };
    std::erase_if(copy.mResults, isOther);
    const QovMesh::MeshArrays arrays(*part.mpGeometry);
    const std::string& name = content.mSteps[step].mName;
    if (arrays.Find(QovMesh::kCoordinates, name) != nullptr) copy.mMeshInstance = name;
    UniqueNames names;
    for (ExportResult& result : copy.mResults) {
      result.mStep = result.mStep ? std::optional<std::size_t>(0) : std::nullopt;
      result.mName = names.Make(result.mName);
    }
    taken.mParts.push_back(std::move(copy));
  }
  return taken;
}

void LoadValues(const ExportResult& result, std::vector<std::uint32_t>& bits) {
  const auto& values = result.mpVariable->mValues;
  values.GetValues(bits);
  if (bits.size() == values.GetNumElements()) return;
  Util::Raise(kSource, ErrorType::ReadError,
              "the values of " + Shown(result.mpVariable->mName) + " cannot be read");
}

const QovMesh::Mesh& MeshCache::Get(const ExportPart& part) {
  if (mpGeometry == part.mpGeometry && mInstance == part.mMeshInstance) return mMesh;
  mpGeometry = nullptr;
  mMesh = {};
  mMesh = QovMesh::LoadMesh(*part.mpGeometry, part.mMeshInstance, mKinds);
  mpGeometry = part.mpGeometry;
  mInstance = part.mMeshInstance;
  return mMesh;
}

}  // namespace Qov::Tools
