#include "MakeLedger.h"

#include <map>
#include <string>
#include <utility>

#include "ExpectedLinks.h"

namespace Qov::Tools {
namespace {

using NamePairs = std::map<std::pair<std::string, std::string>, std::uint64_t>;

/// Moves the pairs one by one, because there can be millions.
std::vector<NamePair> AsList(NamePairs pairs) {
  std::vector<NamePair> list;
  list.reserve(pairs.size());
  while (!pairs.empty()) {
    auto pair = pairs.extract(pairs.begin());
    list.push_back({std::move(pair.key().first), std::move(pair.key().second), pair.mapped()});
  }
  return list;
}

class LedgerMaker {
 public:
  LedgerMaker(const ExpectedModel& model, const std::vector<InputFile>& inputs);

  Ledger Make(const std::optional<PerItem<std::uint64_t>>& found);

 private:
  void CountNode(const ExpectedNode& node);
  void CountResult(const ExpectedResult& result);
  std::optional<MadeRule> FindMadeRule(const ExpectedResult& result);
  bool KeepsValues(const ExpectedResult& result);
  void NoteNames(const ExpectedResult& result);
  void CountViews();
  void CountHistory();
  void CountCopied(std::size_t input, Item item, std::uint64_t numSound, std::uint64_t count);
  void CountMade(Item item, MadeRule rule, std::uint64_t numSound, std::uint64_t count);

  const ExpectedModel& mModel;
  Ledger mLedger;
  PerItem<std::uint64_t> mExpected{};
  QovRyx::LinkFollower<ExpectedResult> mFollower;
  std::vector<QovRyx::LinkFollower<Result>> mInputFollowers;
  std::vector<NamePairs> mRenamed;
  std::vector<NamePairs> mLinked;
};

LedgerMaker::LedgerMaker(const ExpectedModel& model, const std::vector<InputFile>& inputs)
    : mModel(model),
      mLedger(model.mLedger),
      mFollower(FollowLinks(model)),
      mRenamed(inputs.size()),
      mLinked(inputs.size()) {
  for (const InputFile& input : inputs)
    mInputFollowers.push_back(QovRyx::FollowLinks(input.GetNodes()));
}

/// Counts items that are copied from an input: `numSound` of the `count` expected ones.
void LedgerMaker::CountCopied(std::size_t input, Item item, std::uint64_t numSound,
                              std::uint64_t count) {
  mLedger.mInputs[input][item].mCopied += numSound;
  mLedger.OutputOf(item).mCopied += numSound;
  mExpected[static_cast<std::size_t>(item)] += count;
}

/// Counts items that the merge makes: `numSound` of the `count` expected ones.
void LedgerMaker::CountMade(Item item, MadeRule rule, std::uint64_t numSound, std::uint64_t count) {
  if (numSound != 0) mLedger.OutputOf(item).mMade[rule] += numSound;
  mExpected[static_cast<std::size_t>(item)] += count;
}

/// Returns true if a result has the same values in the output as in its input.
bool LedgerMaker::KeepsValues(const ExpectedResult& result) {
  const Result* before = mInputFollowers[result.mInput].FindOwner(*result.mpSource);
  const ExpectedResult* after = mFollower.FindOwner(result);
  return before == (after == nullptr ? nullptr : after->mpValues);
}

/// Returns the rule by which a result was made; nothing if it is copied.
std::optional<MadeRule> LedgerMaker::FindMadeRule(const ExpectedResult& result) {
  if (result.mpSource == nullptr || result.mMade == MadeRule::Unlinked) return result.mMade;
  const bool isLinked = result.mLink.IsLinked();
  const bool sameForm = isLinked == result.mpSource->mLink.IsLinked();
  if (sameForm && (!isLinked || KeepsValues(result))) return std::nullopt;
  return result.mMade ? result.mMade : MadeRule::LinkReplaced;
}

DropRule DropRuleFor(MadeRule made) {
  switch (made) {
    case MadeRule::SharedResult:
      return DropRule::SharedName;
    case MadeRule::LinkedToItself:
      return DropRule::LinkedToItself;
    case MadeRule::Unlinked:
      return DropRule::Unlinked;
    case MadeRule::StoredOnce:
      return DropRule::StoredOnce;
    default:
      return DropRule::LinkReplaced;
  }
}

void LedgerMaker::CountResult(const ExpectedResult& result) {
  const Item item = result.mLink.IsLinked() ? Item::LinkedResult : Item::Result;
  const std::optional<MadeRule> made = FindMadeRule(result);
  if (!made) {
    CountCopied(result.mInput, item, result.mSound, 1);
  } else {
    CountMade(item, *made, result.mSound, 1);
  }
  if (result.mpSource != nullptr && made) {
    const Item was = result.mpSource->mLink.IsLinked() ? Item::LinkedResult : Item::Result;
    ++mLedger.mInputs[result.mInput][was].mDropped[DropRuleFor(*made)];
  }
  if (result.mSound) NoteNames(result);
}

void LedgerMaker::NoteNames(const ExpectedResult& result) {
  if (result.mpSource != nullptr && result.mpSource->mName != result.mName) {
    ++mRenamed[result.mInput][{result.mpSource->mName, result.mName}];
  }
  if (result.mMade != MadeRule::SharedResult) return;
  const ExpectedResult* primary = mModel.FindTarget(result);
  ++mLinked[result.mInput][{primary == nullptr ? "" : primary->mName, result.mName}];
}

void LedgerMaker::CountNode(const ExpectedNode& node) {
  if (node.mpSource == nullptr) {
    CountMade(Item::Group, MadeRule::MergeGroup, node.mSound, 1);
    return;
  }
  CountCopied(node.mInput, ItemOf(*node.mpSource), node.mSound, 1);
  for (const ExpectedResult& result : node.mResults) CountResult(result);
  if (const auto* sets = dynamic_cast<const QovRyx::NodeSets*>(node.GetContent())) {
    CountCopied(node.mInput, Item::Set, node.mNumSoundSets, sets->GetNumSets());
  }
}

void LedgerMaker::CountViews() {
  if (mModel.mCurrentView) {
    CountCopied(mModel.mCurrentView->mInput, Item::CurrentView, mModel.mCurrentView->mSound, 1);
  }
  if (mModel.mSequencer) {
    CountCopied(mModel.mSequencer->mInput, Item::Sequencer, mModel.mSequencer->mSound, 1);
  }
  for (const ExpectedPath& path : mModel.mPaths) {
    CountCopied(path.mInput, Item::ViewPath, path.mSound, 1);
    CountCopied(path.mInput, Item::PathView, path.mNumSoundViews,
                path.mpSource->mViewPoints.size());
  }
}

void LedgerMaker::CountHistory() {
  for (const auto& entry : mModel.mHistory)
    CountCopied(entry.mInput, Item::HistoryEntry, entry.mSound, 1);
  CountMade(Item::HistoryEntry, MadeRule::HistoryEntry, mModel.mNumSoundNewHistory,
            mModel.mNewHistory.size());
}

Ledger LedgerMaker::Make(const std::optional<PerItem<std::uint64_t>>& found) {
  for (const auto& [id, node] : mModel.mNodes) CountNode(node);
  CountViews();
  CountHistory();
  for (std::size_t i = 0; i < mLedger.mInputs.size(); ++i) {
    mLedger.mInputs[i].mRenamed = AsList(std::move(mRenamed[i]));
    mLedger.mInputs[i].mLinked = AsList(std::move(mLinked[i]));
  }
  for (std::size_t i = 0; i < kNumItems; ++i) {
    mLedger.mOutput[i].mFound = found ? (*found)[i] : mExpected[i];
  }
  return std::move(mLedger);
}

}  // namespace

Ledger MakeLedger(const ExpectedModel& model, const std::vector<InputFile>& inputs,
                  const std::optional<PerItem<std::uint64_t>>& found) {
  return LedgerMaker(model, inputs).Make(found);
}

}  // namespace Qov::Tools
