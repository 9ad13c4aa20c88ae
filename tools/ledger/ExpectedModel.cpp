#include "ExpectedModel.h"

#include "ExpectNodes.h"

namespace Qov::Tools {
namespace {

constexpr std::array kModelItems = {
    Item::Group,     Item::Shape,  Item::Geometry,     Item::NodeSets, Item::UnknownNode,
    Item::EmptyNode, Item::Result, Item::LinkedResult, Item::Set,      Item::HistoryEntry};
constexpr std::array kViewItems = {Item::CurrentView, Item::ViewPath, Item::PathView,
                                   Item::Sequencer};

void CountFound(const std::vector<InputFile>& inputs, Ledger& ledger) {
  for (const InputFile& input : inputs) {
    InputLedger& books = ledger.mInputs.emplace_back();
    books.mPath = input.mPath;
    const PerItem<std::uint64_t> counts = CountItems(*input.mpTree);
    const auto take = [&](Item item) {
      books[item].mFound = counts[static_cast<std::size_t>(item)];
    };
    for (const Item item : kViewItems) take(item);
    if (input.mIsViewFile) continue;
    for (const Item item : kModelItems) take(item);
  }
}

void DropAll(ExpectedModel& model, std::size_t input, Item item, DropRule rule) {
  model.Drop(input, item, rule, model.mLedger.mInputs[input][item].mFound);
}

/// Takes the views of an input; the current view and the sequencer that were there go.
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

// First those of the model, which is read first wherever it stands, then those of the files.
void ExpectAllViews(ExpectedModel& model, const std::vector<InputFile>& inputs) {
  for (const bool ofFiles : {false, true}) {
    for (std::size_t i = 0; i < inputs.size(); ++i) {
      const bool counts = ofFiles ? inputs[i].mIsViewFile : inputs[i].mNumber == 1;
      if (counts) ExpectViews(model, i, *inputs[i].mpTree);
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

/// Expects one entry for each time that the model is saved.
void ExpectNewHistory(ExpectedModel& model, MergeMode mode, const std::vector<InputFile>& inputs) {
  QovRyx::ModifierInfo entry;
  entry.mApplication = "RyxMerge";
  entry.mApplicationVersion = "2017 R1";
  entry.mFileVersion = QovJbf::kCurrentFileVersion;
  bool hasViewFiles = false;
  for (const InputFile& input : inputs) hasViewFiles = hasViewFiles || input.mIsViewFile;
  if (mode != MergeMode::ViewsOnly) model.mNewHistory.push_back(entry);
  if (hasViewFiles) model.mNewHistory.push_back(entry);
  model.mNumSoundNewHistory = model.mNewHistory.size();
}

}  // namespace

bool ExpectedNode::IsGeometry() const {
  return mpSource != nullptr && QovRyx::AsGeometry(*mpSource) != nullptr;
}

const ExpectedResult* ExpectedModel::FindResult(const QovRyx::ResultPlace& place) const {
  const auto node = mNodes.find(place.mNode);
  if (node == mNodes.end() || place.mPosition >= node->second.mResults.size()) return nullptr;
  return &node->second.mResults[place.mPosition];
}

const ExpectedResult* ExpectedModel::FindTarget(const ExpectedResult& linked) const {
  return linked.mLink.HasTarget() ? FindResult(linked.mLink.GetPlace()) : nullptr;
}

void ExpectedModel::Drop(std::size_t input, Item item, DropRule rule, std::uint64_t count) {
  if (count != 0) mLedger.mInputs[input][item].mDropped[rule] += count;
}

ExpectedResult ExpectResult(std::size_t input, const Result& result) {
  ExpectedResult expected;
  expected.mName = result.mName;
  expected.mInput = input;
  expected.mpSource = &result;
  expected.mpFields = &result;
  expected.mKind = result.mKind;
  expected.mKindHighByte = result.mKindHighByte;
  expected.mLink = result.mLink;
  if (!result.mLink.IsLinked()) expected.mpValues = &result;
  return expected;
}

ExpectedNode ExpectNode(std::size_t input, const QovRyx::NodeTree::Node& entry) {
  ExpectedNode node;
  node.mInput = input;
  node.mpSource = &entry;
  node.mLinks = {entry.mId,
                 entry.mParent,
                 entry.mPreviousSibling,
                 entry.mNextSibling,
                 entry.mFirstChild,
                 entry.mLastChild,
                 nullptr};
  if (const auto* sets = dynamic_cast<const QovRyx::NodeSets*>(entry.mData.get())) {
    node.mNumSoundSets = sets->GetNumSets();
  } else if (const auto* geometry = QovRyx::AsGeometry(entry)) {
    for (const Result& result : geometry->GetVariables()) {
      node.mResults.push_back(ExpectResult(input, result));
    }
  }
  return node;
}

ExpectedModel ExpectModel(MergeMode mode, const std::vector<InputFile>& inputs,
                          std::vector<Obstacle>& obstacles) {
  ExpectedModel model;
  model.mLedger.mMode = mode;
  CountFound(inputs, model.mLedger);
  if (mode == MergeMode::Datasets) {
    ExpectDatasets(inputs, model, obstacles);
  } else {
    ExpectInstances(mode, inputs, model, obstacles);
  }
  ExpectViewsAndHistory(model, inputs);
  ExpectNewHistory(model, mode, inputs);
  return model;
}

}  // namespace Qov::Tools
