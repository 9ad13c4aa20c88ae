#include "ExpectModel.h"

#include "ExpectDatasets.h"
#include "ExpectInstances.h"

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

/// Adds the views of an input. Its current view and sequencer replace earlier ones.
void ExpectViews(ExpectedModel& model, std::size_t input, const QovRyx::Tree& tree) {
  if (!tree.HasViewPoints()) return;
  if (model.mCurrentView) {
    model.Drop(model.mCurrentView->mInput, Item::CurrentView, DropRule::ViewReplaced);
    model.Drop(model.mSequencer->mInput, Item::Sequencer, DropRule::SequencerReplaced);
  }
  model.mCurrentView = {input, &tree.GetViewPoint()};
  model.mSequencer = {input, &tree.GetSequencerData()};
  for (const QovRyx::ViewPointPath& path : tree.GetViewPointPaths()) {
    ExpectedPath expected;
    expected.mInput = input;
    expected.mpSource = &path;
    expected.mNumSoundViews = path.mViewPoints.size();
    model.mPaths.push_back(expected);
  }
}

/// Adds the views of the model and then those of the view-point files, whatever their order is.
void ExpectAllViews(ExpectedModel& model, const std::vector<InputFile>& inputs) {
  for (const bool isFilePass : {false, true}) {
    for (std::size_t i = 0; i < inputs.size(); ++i) {
      const bool isInPass = isFilePass ? inputs[i].mIsViewFile : inputs[i].mNumber == 1;
      if (isInPass) ExpectViews(model, i, *inputs[i].mpTree);
    }
  }
}

void ExpectViewsAndHistory(ExpectedModel& model, const std::vector<InputFile>& inputs) {
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    const QovRyx::Tree& tree = *inputs[i].mpTree;
    if (inputs[i].mNumber > 1) {
      for (const Item item : kViewItems) DropAll(model, i, item, DropRule::FurtherViews);
      DropAll(model, i, Item::HistoryEntry, DropRule::FurtherHistory);
    } else if (inputs[i].mNumber == 1) {
      for (const auto& entry : tree.GetModifiers()) model.mHistory.push_back({i, &entry});
    }
  }
  ExpectAllViews(model, inputs);
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
  if (hasViewFiles) model.mNewHistory.push_back(entry);
  model.mNumSoundNewHistory = model.mNewHistory.size();
}

}  // namespace

ExpectedModel ExpectModel(MergeMode mode, const std::vector<InputFile>& inputs,
                          std::vector<Obstacle>& obstacles) {
  ExpectedModel model;
  model.mLedger.mMode = mode;
  CountFound(inputs, model.mLedger);
  if (mode.mKind == MergeKind::Datasets) {
    ExpectDatasets(inputs, model, obstacles);
  } else {
    ExpectInstances(mode, inputs, model, obstacles);
  }
  ExpectViewsAndHistory(model, inputs);
  ExpectNewHistory(model, mode, inputs);
  return model;
}

}  // namespace Qov::Tools
