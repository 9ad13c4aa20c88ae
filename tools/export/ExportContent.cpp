#include "export/ExportContent.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "ErrorText.h"
#include "Plural.h"
#include "Qov/Ryx/ValueOwners.h"
#include "Qov/Util/Raise.h"
#include "Terminal.h"
#include "TreeWalk.h"
#include "diagnostics/Printable.h"
#include "export/UniqueNames.h"
#include "merge/ArrayNames.h"
#include "merge/SelectionWords.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;
using QovRyx::Geometry;
using QovRyx::SelectionWords;

constexpr const char* kSource = "tools/export/ExportContent";

[[noreturn]] void RaiseNotFound(const std::string& text) {
  Util::Raise(kSource, ErrorType::ElementNotFound, text);
}

std::string Shown(std::string_view name) { return Escape(name, {}); }

/// Returns true if there are no words, or if one of them fits one of the names.
bool Accept(SelectionWords& words, std::initializer_list<std::string> names) {
  const auto fits = [&names](const std::string& word) {
    return std::any_of(names.begin(), names.end(),
                       [&word](const std::string& name) { return QovRyx::FitsName(word, name); });
  };
  return words.IsEmpty() || words.Test(fits);
}

/// Notes the words that fit nothing. Raises ElementNotFound if none fits. `list` is the command
/// that shows the names.
void CheckMatches(const SelectionWords& words, const std::string& list,
                  std::vector<std::string>& notes) {
  words.RequireAny("; " + list + " lists them");
  words.NoteUnused(" chooses nothing", notes);
}

class ContentBuilder {
 public:
  ContentBuilder(const QovRyx::Tree& tree, const ExportRequest& request, StepLayout layout)
      : mTree(tree),
        mRequest(request),
        mLayout(layout),
        mTable(tree.GetNodes()),
        mRule(tree.GetNodes()),
        mOwners(tree.GetNodes()),
        mNodeWords(request.mNodes, "node"),
        mResultWords(request.mResults, "result"),
        mSetWords(request.mSetNames, "node set") {}

  ExportContent Build() {
    mContent.mSetNames = mRequest.mSetNames;
    ChooseSteps();
    AddParts();
    CheckMatches(mNodeWords, "ryx ls", mContent.mNotes);
    if (!mRequest.mExactResults) CheckMatches(mResultWords, "ryx ls", mContent.mNotes);
    CheckMeshes();
    if (mContent.mParts.empty()) {
      RaiseNotFound(fmt::format("the model has no geometry that can be {}{}", mRequest.mVerb,
                                mRefusal.empty() ? "" : ": " + mRefusal));
    }
    AddSetNodes();
    CheckMatches(mSetWords, "ryx ls", mContent.mNotes);
    OmitOtherData();
    for (const std::string& warning : mTable.GetWarnings()) Note(warning);
    return std::move(mContent);
  }

 private:
  void Note(std::string text) { mContent.mNotes.push_back(std::move(text)); }
  void Omit(std::string text) { mContent.mOmissions.push_back(std::move(text)); }
  /// Notes something that is chosen and cannot be written.
  void Refuse(const std::string& text) {
    mContent.mIsComplete = false;
    if (mRefusal.empty()) mRefusal = text;
    Note(fmt::format("not {}: {}", mRequest.mVerb, text));
  }

  void ChooseSteps() {
    SelectionWords words(mRequest.mSteps, "step");
    const auto& steps = mTable.GetSteps();
    for (std::size_t i = 0; i < steps.size(); ++i) {
      if (!AcceptsStep(words, i)) {
        Omit("step " + Shown(steps[i].mName) + ": not chosen");
        continue;
      }
      mChosenSteps[i] = mContent.mSteps.size();
      mContent.mSteps.push_back(steps[i]);
    }
    CheckMatches(words, "ryx export --dry-run", mContent.mNotes);
  }

  /// Compares a word with the step's number only if the word fits no step's name.
  bool AcceptsStep(SelectionWords& words, std::size_t position) const {
    const auto& steps = mTable.GetSteps();
    const std::string number = fmt::format("{}", position + 1);
    const auto fits = [&](const std::string& word) {
      const auto fitsNameOf = [&word](const QovMesh::Step& step) {
        return QovRyx::FitsName(word, step.mName);
      };
      return fitsNameOf(steps[position]) || (QovRyx::FitsName(word, number) &&
                                             std::none_of(steps.begin(), steps.end(), fitsNameOf));
    };
    return words.IsEmpty() || words.Test(fits);
  }

  bool AcceptsResult(const Geometry::VarStruct& variable, const QovRyx::ArrayName& name) {
    const auto& words = mRequest.mResults;
    if (mRequest.mExactResults)
      return std::find(words.begin(), words.end(), name.mBase) != words.end();
    return Accept(mResultWords, {std::string(name.mBase), variable.mName});
  }

  bool AcceptsNode(std::uint32_t id, const QovRyx::Node& node) {
    const auto& ids = mRequest.mNodeIds;
    if (!ids.empty()) return std::find(ids.begin(), ids.end(), id) != ids.end();
    return Accept(mNodeWords, {node.GetName(), fmt::format("{}", id)});
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
      const bool fits = AcceptsNode(step->mId, node);
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
    Note("group " + Shown(group.GetName()) + ": its placement is not applied to coordinates");
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
    if (arrays.Find(QovRyx::kCoordinates, part.mMeshInstance) == nullptr) {
      return Refuse(PartText(part) + ": it has no array Coordinates");
    }
    UniqueNames names;
    for (const auto& variable : geometry.GetVariables()) {
      const std::string_view base = QovRyx::SplitName(variable.mName).mBase;
      if (!QovRyx::IsMeshBase(base)) AddResult(variable, arrays, names, part);
    }
    mContent.mParts.push_back(std::move(part));
  }

  /// Returns the instance part of the first coordinates of a chosen step; empty for a mesh that all
  /// steps share.
  std::string FindMeshInstance(const Geometry& geometry) const {
    for (const auto& variable : geometry.GetVariables()) {
      const QovRyx::ArrayName name = QovRyx::SplitName(variable.mName);
      if (name.mBase != QovRyx::kCoordinates) continue;
      if (name.mInstance.empty()) return {};
      const bool isChosen =
          std::any_of(mContent.mSteps.begin(), mContent.mSteps.end(),
                      [&](const QovMesh::Step& step) { return step.mName == name.mInstance; });
      if (isChosen || mContent.mSteps.empty()) return std::string(name.mInstance);
    }
    return {};
  }

  static std::string PartText(const ExportPart& part) { return "geometry " + Shown(part.mName); }

  static std::string WhereText(const ExportPart& part, const Geometry::VarStruct& variable) {
    return "result " + Shown(variable.mName) + " of " + Shown(part.mName);
  }

  /// Returns which mesh of the part a step has.
  std::string MeshOfStep(const QovMesh::MeshArrays& arrays, const ExportPart& part,
                         const QovMesh::Step& step) const {
    const bool isOwn =
        mLayout == StepLayout::Meshes && arrays.HasOwnMesh(step.mName, part.mMeshInstance);
    return isOwn ? step.mName : part.mMeshInstance;
  }

  void AddResult(const Geometry::VarStruct& variable, const QovMesh::MeshArrays& arrays,
                 UniqueNames& names, ExportPart& part) {
    const QovRyx::ArrayName name = QovRyx::SplitName(variable.mName);
    if (!AcceptsResult(variable, name)) {
      return Omit(WhereText(part, variable) + ": not chosen");
    }
    ExportResult result;
    result.mpVariable = &variable;
    if (const auto step = mTable.FindStep(part.mId, variable)) {
      const auto chosen = mChosenSteps.find(*step);
      if (chosen == mChosenSteps.end()) return;  // listed once, with the step
      result.mStep = chosen->second;
    }
    if (variable.mLink.IsLinked() && variable.mValues.GetLoader() == nullptr) {
      return Refuse(WhereText(part, variable) + ": it is a dangling link, which has no values");
    }
    result.mPlacement = FindPlacement(result, arrays, part);
    result.mIsUnsigned = mOwners.HoldUnsigned(variable);
    result.mWidth = std::max<std::size_t>(variable.mValues.GetWidth(), 1);
    result.mName = std::string(name.mBase);
    const bool isInNames = mLayout == StepLayout::Names;
    if (isInNames && mContent.mSteps.size() > 1 && !name.mInstance.empty()) {
      result.mName += fmt::format(" ({})", name.mInstance);
    }
    if (isInNames) result.mName = names.Make(result.mName);
    part.mResults.push_back(std::move(result));
  }

  /// Decides on the placement by the mesh of the result's step, or by those of all steps.
  QovMesh::Placement FindPlacement(const ExportResult& result, const QovMesh::MeshArrays& arrays,
                                   const ExportPart& part) {
    std::vector<std::string> meshes;
    for (std::size_t i = 0; i < mContent.mSteps.size(); ++i) {
      if (result.mStep.value_or(i) != i) continue;
      meshes.push_back(MeshOfStep(arrays, part, mContent.mSteps[i]));
    }
    if (meshes.empty()) meshes.push_back(part.mMeshInstance);
    const auto& variable = *result.mpVariable;
    const auto decision = mRule.Decide(variable, arrays.Count(meshes[0]));
    if (!decision.mWarning.empty()) Note(WhereText(part, variable) + ": " + decision.mWarning);
    for (const std::string& mesh : meshes) {
      const auto other = mRule.Decide(variable, arrays.Count(mesh)).mPlacement;
      if (other == decision.mPlacement) continue;
      Note(WhereText(part, variable) + ": the meshes of the steps differ: field data");
      return QovMesh::Placement::Field;
    }
    return decision.mPlacement;
  }

  /// Reads the meshes. Leaves out the parts with a mesh that contradicts itself.
  void CheckMeshes() {
    mContent.mpMeshes = std::make_shared<MeshCache>(mRequest.mKinds);
    std::vector<ExportPart> sound;
    std::set<std::size_t> nodeCounts;
    for (ExportPart& part : mContent.mParts) {
      try {
        CheckMesh(part);
      } catch (const Util::Exception& error) {
        if (error.GetType() != ErrorType::MismatchError) throw;
        Refuse(PartText(part) + ": " + ErrorText(error));
        continue;
      }
      for (const auto& decision : part.mDecisions) nodeCounts.insert(decision.mNumNodes);
      sound.push_back(std::move(part));
    }
    mContent.mParts = std::move(sound);
    for (const auto& [numNodes, kind] : mRequest.mKinds) {
      if (!mContent.mIsComplete || nodeCounts.contains(numNodes)) continue;
      RaiseNotFound(fmt::format("no cell has {}, for --cells {}={}", Plural(numNodes, "node"),
                                numNodes, QovMesh::GetShape(kind).mName));
    }
  }

  void CheckMesh(ExportPart& part) {
    const QovMesh::MeshArrays arrays(*part.mpGeometry);
    if (mLayout == StepLayout::Meshes) {
      for (const QovMesh::Step& step : mContent.mSteps) {
        const std::string instance = MeshOfStep(arrays, part, step);
        if (instance != part.mMeshInstance) LoadMesh(*part.mpGeometry, instance, mRequest.mKinds);
      }
    }
    const QovMesh::Mesh& mesh = mContent.mpMeshes->Get(part);
    part.mNumPoints = mesh.GetNumPoints();
    part.mDecisions = mesh.mDecisions;
    for (const std::string& warning : mesh.mWarnings) Note(PartText(part) + ": " + warning);
    for (const auto& decision : mesh.mDecisions) {
      if (!decision.mWarning.empty()) Note(PartText(part) + ": " + DescribeDecision(decision));
    }
  }

  /// A NodeSets node belongs to the geometries below its parent.
  void AddSetNodes() {
    const auto& nodes = mTree.GetNodes();
    for (const auto& [id, entry] : nodes) {
      const auto* sets = dynamic_cast<const QovRyx::NodeSets*>(entry.mData.get());
      if (sets == nullptr) continue;
      if (!mRequest.mSets) {
        Omit("node sets " + Shown(sets->GetName()) + ": not chosen");
        continue;
      }
      if (!mRequest.mSetNames.empty()) ChooseSets(*sets);
      bool isUsed = false;
      for (ExportPart& part : mContent.mParts) {
        if (!IsBelow(part.mId, entry.mParent)) continue;
        part.mSetNodes.push_back(id);
        isUsed = true;
      }
      if (!isUsed) {
        Omit("node sets " + Shown(entry.mData->GetName()) +
             ": no chosen geometry is below their parent");
      }
    }
  }

  void ChooseSets(const QovRyx::NodeSets& node) {
    const QovRyx::SetColumns sets = node.GetColumns();
    for (std::size_t i = 0; i < sets.size(); ++i) {
      const std::string name(sets[i].mName);
      if (!Accept(mSetWords, {name})) Omit("node set " + Shown(name) + ": not chosen");
    }
  }

  /// Lists what no format has a place for.
  void OmitOtherData() {
    std::uint64_t numAttributes = 0;
    std::uint64_t numMaterials = 0;
    const auto count = [&](const QovUtil::Attributes& attributes) {
      for (const auto& [name, value] : attributes) numAttributes += name == "time" ? 0 : 1;
    };
    for (const auto& [id, entry] : mTree.GetNodes()) {
      const QovRyx::Node* node = entry.mData.get();
      if (const auto* group = dynamic_cast<const QovRyx::Group*>(node)) count(group->mAttributes);
      if (dynamic_cast<const QovRyx::Shape*>(node) != nullptr) ++numMaterials;
      if (dynamic_cast<const QovRyx::FutureNode*>(node) != nullptr) {
        Omit("node " + Shown(node->GetName()) + ": its type is unknown");
      }
      const auto* geometry = dynamic_cast<const Geometry*>(node);
      if (geometry == nullptr) continue;
      for (const auto& variable : geometry->GetVariables()) count(variable.mAttributes);
    }
    const auto omitAll = [&](std::uint64_t number, const char* noun) {
      if (number != 0) Omit(Plural(number, noun) + ": never exported");
    };
    omitAll(numAttributes, "attribute");
    omitAll(numMaterials, "material");
    Omit("views and history: never exported");
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
  StepLayout mLayout;
  QovMesh::StepTable mTable;
  QovMesh::PlacementRule mRule;
  QovRyx::ValueOwners mOwners;
  SelectionWords mNodeWords;
  SelectionWords mResultWords;
  SelectionWords mSetWords;
  std::map<std::size_t, std::size_t> mChosenSteps;  ///< From the table to ExportContent::mSteps.
  std::string mRefusal;  ///< The first chosen thing that cannot be written.
  ExportContent mContent;
};

}  // namespace

ExportContent ChooseContent(const QovRyx::Tree& tree, const ExportRequest& request,
                            StepLayout layout) {
  return ContentBuilder(tree, request, layout).Build();
}

ExportContent TakeStep(const ExportContent& content, std::size_t step) {
  ExportContent taken;
  taken.mSteps = {content.mSteps[step]};
  taken.mSetNames = content.mSetNames;
  for (const ExportPart& part : content.mParts) {
    ExportPart copy = part;
    const auto isOther = [&](const ExportResult& result) {
      return result.mStep && *result.mStep != step;
    };
    std::erase_if(copy.mResults, isOther);
    copy.mResults.shrink_to_fit();  // callers keep the contents of many steps
    const QovMesh::MeshArrays arrays(*part.mpGeometry);
    const std::string& name = content.mSteps[step].mName;
    if (arrays.HasOwnMesh(name, part.mMeshInstance)) copy.mMeshInstance = name;
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

void MeshCache::Clear() {
  mpGeometry = nullptr;
  mMesh = {};
}

const QovMesh::Mesh& MeshCache::Get(const ExportPart& part) {
  if (mpGeometry == part.mpGeometry && mInstance == part.mMeshInstance) return mMesh;
  Clear();
  mMesh = QovMesh::LoadMesh(*part.mpGeometry, part.mMeshInstance, mKinds);
  mpGeometry = part.mpGeometry;
  mInstance = part.mMeshInstance;
  return mMesh;
}

}  // namespace Qov::Tools
