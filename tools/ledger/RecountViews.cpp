#include <fmt/format.h>

#include <algorithm>

#include "Recount.h"
#include "compare/Records.h"

namespace Qov::Tools {
namespace {

bool IsSameEntry(QovRyx::ModifierInfo left, const QovRyx::ModifierInfo& right) {
  left.mRecordMachine = right.mRecordMachine;
  return left == right;
}

/// The date is the only thing that cannot be foreseen.
bool IsNewEntry(QovRyx::ModifierInfo wanted, const QovRyx::ModifierInfo& found) {
  wanted.mDate = found.mDate;
  return IsSameEntry(wanted, found);
}

std::uint64_t CountSameViews(const QovRyx::ViewPointPath& left,
                             const QovRyx::ViewPointPath& right) {
  const std::size_t n = std::min(left.mViewPoints.size(), right.mViewPoints.size());
  std::uint64_t count = 0;
  for (std::size_t i = 0; i < n; ++i) {
    if (IsSameRecord(left.mViewPoints[i], right.mViewPoints[i])) ++count;
  }
  return count;
}

}  // namespace

void Recount::CompareViews() {
  if (mOutput.HasViewPoints() && !mModel.mCurrentView) {
    mDifferences.Add({0, "", "", "", "the output has views, and no input gives any"});
    return;
  }
  if (!mModel.mCurrentView) return;
  const bool hasViews = mOutput.HasViewPoints();
  auto& view = *mModel.mCurrentView;
  auto& sequencer = *mModel.mSequencer;
  view.mSound = hasViews && IsSameRecord(*view.mpSource, mOutput.GetViewPoint());
  sequencer.mSound = hasViews && IsSameRecord(*sequencer.mpSource, mOutput.GetSequencerData());
  if (!view.mSound) Report(view.mInput, view.mpSource->mName, "the current view is another one");
  if (!sequencer.mSound) {
    Report(sequencer.mInput, sequencer.mpSource->mName, "the sequencer is another one");
  }
  ComparePaths();
}

void Recount::ComparePaths() {
  const auto& paths = mOutput.GetViewPointPaths();
  for (std::size_t i = 0; i < mModel.mPaths.size(); ++i) {
    ExpectedPath& path = mModel.mPaths[i];
    const std::size_t numViews = path.mpSource->mViewPoints.size();
    path.mSound = i < paths.size() && paths[i].mName == path.mpSource->mName;
    path.mNumSoundViews = path.mSound ? CountSameViews(*path.mpSource, paths[i]) : 0;
    if (!path.mSound) {
      Report(path.mInput, path.mpSource->mName, "the path is missing");
    } else if (path.mNumSoundViews != numViews || paths[i].mViewPoints.size() != numViews) {
      Report(path.mInput, path.mpSource->mName, "the path has other views");
    }
  }
  if (paths.size() <= mModel.mPaths.size()) return;
  const std::size_t numExtra = paths.size() - mModel.mPaths.size();
  mDifferences.Add({0, "", "", "", fmt::format("the output has {} paths too many", numExtra)});
}

void Recount::CompareHistory() {
  const auto& history = mOutput.GetModifiers();
  for (std::size_t i = 0; i < mModel.mHistory.size(); ++i) {
    auto& entry = mModel.mHistory[i];
    entry.mSound = i < history.size() && IsSameEntry(*entry.mpSource, history[i]);
    if (!entry.mSound) {
      Report(entry.mInput, entry.mpSource->mApplication, "an entry of the history is missing");
    }
  }
  mModel.mNumSoundNewHistory = 0;
  for (std::size_t i = 0; i < mModel.mNewHistory.size(); ++i) {
    const std::size_t k = mModel.mHistory.size() + i;
    if (k < history.size() && IsNewEntry(mModel.mNewHistory[i], history[k])) {
      ++mModel.mNumSoundNewHistory;
    } else {
      mDifferences.Add({0, "", "", "", "the history has no entry of the merge"});
    }
  }
  if (history.size() > mModel.mHistory.size() + mModel.mNewHistory.size()) {
    mDifferences.Add({0, "", "", "", "the history has entries too many"});
  }
}

}  // namespace Qov::Tools
