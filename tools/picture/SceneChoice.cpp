#include "picture/SceneChoice.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "Qov/Util/Raise.h"
#include "Suggestion.h"
#include "Terminal.h"
#include "export/ExportContent.h"
#include "merge/ArrayNames.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;

/// A result of the command line.
struct ResultName {
  std::string mBase;
  std::string mInstance;  ///< Chooses a step, if no other option does.
};

/// Returns the result that a word names, with or without its instance part.
ResultName FindResult(const QovRyx::Tree& tree, const std::string& word) {
  const std::string name = Unescape(word);
  std::optional<ResultName> found;
  std::vector<std::string> names;
  QovRyx::ForEachGeometry(tree.GetNodes(), [&](std::uint32_t, const QovRyx::Geometry& geometry) {
    for (const auto& variable : geometry.GetVariables()) {
      const QovRyx::ArrayName parts = QovRyx::SplitName(variable.mName);
      if (QovRyx::IsMeshBase(parts.mBase)) continue;
      if (parts.mBase == word || parts.mBase == name) found = {std::string(parts.mBase), {}};
      if (!found && variable.mName == name) {
        found = {std::string(parts.mBase), std::string(parts.mInstance)};
      }
      names.emplace_back(parts.mBase);
    }
  });
  if (found) return *found;
  const std::string similar = Suggest(name, names);
  Util::Raise("tools/picture/SceneChoice", ErrorType::ElementNotFound,
              "the model has no result " + Escape(name, {}) +
                  (similar.empty() ? "" : ", did you mean " + Escape(similar, {}) + "?") +
                  (similar.empty() ? "; \"ryx ls\" lists the results" : ""));
}

class SceneChooser {
 public:
  SceneChooser(const QovRyx::Tree& tree, const PictureRequest& request, const ModelView& view,
               bool onlyFirst)
      : mTree(tree), mRequest(request), mView(view), mOnlyFirst(onlyFirst) {}

  ModelScenes Choose() {
    ExportRequest wanted = MakeExportRequest();
    const ExportContent content = ChooseContent(mTree, wanted, StepLayout::Meshes);
    mScenes.mNotes = content.mNotes;
    mScenes.mIsComplete = content.mIsComplete;
    mScenes.mpMeshes = content.mpMeshes;
    if (mResults.empty()) mResults.emplace_back();
    for (const std::string& result : mResults) {
      if (!HasTooMany()) AddScenes(content, result);
    }
    NoteSteps(content);
    return std::move(mScenes);
  }

 private:
  ExportRequest MakeExportRequest() {
    ExportRequest wanted;
    wanted.mNodes = mRequest.mNodes;
    wanted.mNodeIds = mRequest.mNodeIds;
    wanted.mSteps = mRequest.mSteps;
    wanted.mSets = false;
    wanted.mExactResults = true;
    wanted.mVerb = "drawn";
    const auto add = [&](const std::string& word) {
      const ResultName name = FindResult(mTree, word);
      if (mRequest.mSteps.empty() && !name.mInstance.empty()) {
        wanted.mSteps.push_back(name.mInstance);
      }
      wanted.mResults.push_back(name.mBase);
      return name.mBase;
    };
    for (const std::string& word : mRequest.mResults) mResults.push_back(add(word));
    if (mResults.empty() && !mView.GetResult().empty()) AddResultOfView(wanted);
    if (!mRequest.mDeform.empty()) mDeform = add(mRequest.mDeform);
    return wanted;
  }

  /// A view may name a result that the model lacks.
  void AddResultOfView(ExportRequest& wanted) {
    try {
      mResults.push_back(FindResult(mTree, Escape(mView.GetResult(), {})).mBase);
      wanted.mResults.push_back(mResults.back());
    } catch (const Util::Exception&) {
      mScenes.mNotes.push_back("the view shows the result " + Escape(mView.GetResult(), {}) +
                               ", which the model does not have: colours of parts");
    }
  }

  void AddScenes(const ExportContent& content, const std::string& result) {
    const std::size_t before = mScenes.mScenes.size();
    if (content.mSteps.empty()) AddScene(content, result, "");
    for (std::size_t i = 0; i < content.mSteps.size(); ++i) {
      if (HasTooMany() || (mOnlyFirst && mScenes.mScenes.size() > before)) break;
      AddScene(TakeStep(content, i), result, content.mSteps[i].mName);
    }
    if (mScenes.mScenes.size() == before)
      RaiseUnknownResult(content, mMissing, "ryx export --dry-run");
    if (!result.empty()) NoteUncoloured(mScenes.mScenes.back().mContent, result, mScenes.mNotes);
  }

  bool HasTooMany() const { return mScenes.mScenes.size() > kMostScenes; }

  /// Adds the scene of a step, unless the step lacks the result or the deformation.
  void AddScene(ExportContent content, const std::string& result, const std::string& step) {
    Scene scene;
    scene.mContent = std::move(content);
    scene.mResult = result;
    scene.mComponent = mRequest.mComponent;
    scene.mStep = step;
    scene.mDeform = mDeform;
    scene.mEdges = mRequest.mEdges;
    scene.mSmooth = mRequest.mSmooth;
    scene.mLooks.resize(scene.mContent.mParts.size());
    for (std::size_t i = 0; i < scene.mLooks.size(); ++i) scene.mLooks[i].mColour = PartColour(i);
    for (const std::string& name : {result, mDeform}) {
      if (name.empty() || FindSceneResult(scene, name) != nullptr) continue;
      mMissing = name;
      return;
    }
    if (mScenes.mScenes.empty()) {
      mView.Apply(scene, mScenes.mNotes);
    } else {
      scene.mLooks = mScenes.mScenes.front().mLooks;
    }
    LoadResultValues(scene);
    mScenes.mScenes.push_back(std::move(scene));
  }

  void NoteSteps(const ExportContent& content) {
    const bool usesStep = !mResults.front().empty() || !mDeform.empty();
    if (!mOnlyFirst || !usesStep || content.mSteps.size() < 2) return;
    mScenes.mNotes.push_back(fmt::format(
        "the picture shows step {} of {} steps: --step chooses another, --sheet shows all",
        Escape(mScenes.mScenes.front().mStep, {}), content.mSteps.size()));
  }

  const QovRyx::Tree& mTree;
  const PictureRequest& mRequest;
  const ModelView& mView;
  bool mOnlyFirst;
  std::vector<std::string> mResults;  ///< Base names.
  std::string mDeform;
  std::string mMissing;  ///< The result that the last step without a scene lacks.
  ModelScenes mScenes;
};

}  // namespace

ModelScenes ChooseScenes(const QovRyx::Tree& tree, const PictureRequest& request,
                         const ModelView& view, bool onlyFirst) {
  return SceneChooser(tree, request, view, onlyFirst).Choose();
}

}  // namespace Qov::Tools
