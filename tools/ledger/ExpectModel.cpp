#include "ExpectModel.h"

#include "ExpectDatasets.h"
#include "ExpectInstances.h"
#include "ExpectNamedInstances.h"
#include "ExpectSelection.h"

namespace Qov::Tools {
namespace {

constexpr std::array kModelItems = {
    Item::Group,     Item::Shape,  Item::Geometry,     Item::NodeSets, Item::UnknownNode,
    Item::EmptyNode, Item::Result, Item::LinkedResult, Item::Set,      Item::HistoryEntry};
constexpr std::array kViewItems = {Item::CurrentView, Item::ViewPath, Item::PathView,
                                   Item::Sequencer};

void CountFound(const std::vector<InputFile>& inputs, Ledger& ledger) {
  for (const InputFile& input : inputs) {
    InputLedger& counted = ledger.mInputs.emplace_back();
    counted.mPath = input.mPath;
    const PerItem<std::uint64_t> counts = CountItems(*input.mpTree);
    const auto take = [&](Item item) {
      counted[item].mFound = counts[static_cast<std::size_t>(item)];
    };
    for (const Item item : kViewItems) take(item);
    if (input.mIsViewFile) continue;
    for (const Item item : kModelItems) take(item);
  }
}

void DropAll(ExpectedModel& model, std::size_t input, Item item, DropRule rule) {
  model.Drop(input, item, rule, model.mLedger.mInputs[input][item].mFound);
}

void ExpectPaths(ExpectedModel& model, std::size_t input, const QovRyx::Tree& tree) {
  for (const QovRyx::ViewPointPath& path : tree.GetViewPointPaths()) {
    ExpectedPath expected;
    expected.mInput = input;
    expected.mpSource = &path;
    expected.mNumSoundViews = path.mViewPoints.size();
    model.mPaths.push_back(expected);
  }
}

/// Adds the views of an input. Its current view and sequencer replace earlier ones.
void ExpectViews(ExpectedModel& model, std::size_t input, const QovRyx::Tree& tree) {
  if (!tree.HasViewPoints()) return;
  if (model.mCurrentView) {
    model.Drop(model.mCurrentView->mInput, Item::CurrentView, DropRule::ViewReplaced);
    model.Drop(model.mSequencer->mInput, Item::Sequencer, DropRule::SequencerReplaced);
  }
  model.mCurrentView = {input, &tree.GetViewPoint()};
  model.mSequencer = {input, &tree.GetSequencerData()};
  ExpectPaths(model, input, tree);
}

/// Adds the paths of a further model. Its current view and sequencer are taken only if there are
/// none yet.
void ExpectMoreViews(ExpectedModel& model, std::size_t input, const QovRyx::Tree& tree) {
  if (!model.mCurrentView) return ExpectViews(model, input, tree);
  for (const Item item : {Item::CurrentView, Item::Sequencer}) {
    DropAll(model, input, item, DropRule::ViewsNotTaken);
  }
  ExpectPaths(model, input, tree);
}

void DropViews(ExpectedModel& model, std::size_t input, DropRule rule) {
  for (const Item item : kViewItems) DropAll(model, input, item, rule);
}

void ExpectViewsOfModels(ExpectedModel& model, QovRyx::MergedViews views,
                         const std::vector<InputFile>& inputs) {
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    const InputFile& input = inputs[i];
    if (input.mIsViewFile) continue;
    if (views == QovRyx::MergedViews::None) {
      DropViews(model, i, DropRule::ViewsNotTaken);
    } else if (input.mNumber == 1) {
      ExpectViews(model, i, *input.mpTree);
    } else if (views == QovRyx::MergedViews::All) {
      ExpectMoreViews(model, i, *input.mpTree);
    } else {
      DropViews(model, i, DropRule::FurtherViews);
    }
  }
}

/// Adds the views of the models and then those of the view-point files, whatever their order is.
void ExpectAllViews(ExpectedModel& model, QovRyx::MergedViews views,
                    const std::vector<InputFile>& inputs) {
  ExpectViewsOfModels(model, views, inputs);
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    if (inputs[i].mIsViewFile) ExpectViews(model, i, *inputs[i].mpTree);
  }
}

void ExpectOldHistory(ExpectedModel& model, const std::vector<InputFile>& inputs) {
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    if (inputs[i].mNumber > 1) {
      DropAll(model, i, Item::HistoryEntry, DropRule::FurtherHistory);
    } else if (inputs[i].mNumber == 1) {
      for (const auto& entry : inputs[i].mpTree->GetModifiers()) {
        model.mHistory.push_back({i, &entry});
      }
    }
  }
}

/// Adds one entry for each time that the merge saves the model.
void ExpectNewHistory(ExpectedModel& model, MergeMode mode, const std::vector<InputFile>& inputs) {
  QovRyx::ModifierInfo entry;
  entry.mApplication = "RyxMerge";
  entry.mApplicationVersion = "2017 R1";
  entry.mFileVersion = QovJbf::kCurrentFileVersion;
  bool hasViewFiles = false;
  for (const InputFile& input : inputs) hasViewFiles = hasViewFiles || input.mIsViewFile;
  if (mode.mKind != MergeKind::ViewsOnly) model.mNewHistory.push_back(entry);
  if (hasViewFiles && mode.IsOfRyxMerge()) model.mNewHistory.push_back(entry);
  model.mNumSoundNewHistory = model.mNewHistory.size();
}

void ExpectNodes(const MergeRequest& request, const std::vector<InputFile>& inputs,
                 ExpectedModel& model, std::vector<Obstacle>& obstacles) {
  if (request.mMode.mKind == MergeKind::Datasets) {
    ExpectDatasets(inputs, request.mJoin, model, obstacles);
  } else if (request.mMode.IsOfRyxMerge()) {
    ExpectInstances(request.mMode, inputs, model, obstacles);
  } else {
    ExpectNamedInstances(request, inputs, model, obstacles);
  }
}

}  // namespace

ExpectedModel ExpectModel(const MergeRequest& request, const std::vector<InputFile>& inputs,
                          std::vector<Obstacle>& obstacles) {
  ExpectedModel model;
  model.mLedger.mMode = request.mMode;
  model.mMayStoreOnce = request.mShare || !request.mSelection.ChoosesAll();
  CountFound(inputs, model.mLedger);
  const std::size_t numBefore = obstacles.size();
  ExpectNodes(request, inputs, model, obstacles);
  if (obstacles.size() == numBefore) ExpectSelection(request.mSelection, model);
  ExpectAllViews(model, request.mViews, inputs);
  ExpectOldHistory(model, inputs);
  ExpectNewHistory(model, request.mMode, inputs);
  return model;
}

ExpectedModel ExpectModel(MergeMode mode, const std::vector<InputFile>& inputs,
                          std::vector<Obstacle>& obstacles) {
  MergeRequest request;
  request.mMode = mode;
  return ExpectModel(request, inputs, obstacles);
}

}  // namespace Qov::Tools
