#include "VerifyViews.h"

#include <algorithm>

#include "Plural.h"
#include "compare/Records.h"

namespace Qov::Tools {
namespace {

bool IsSameEntry(QovRyx::ModifierInfo left, const QovRyx::ModifierInfo& right) {
  left.mRecordMachine = right.mRecordMachine;
  return left == right;
}

/// Returns true for the entry of the merge. Its date is not compared, because it is not known.
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

void VerifyPaths(ExpectedModel& model, const std::vector<QovRyx::ViewPointPath>& paths,
                 FaultReporter& reporter) {
  for (std::size_t i = 0; i < model.mPaths.size(); ++i) {
    ExpectedPath& path = model.mPaths[i];
    const std::size_t numViews = path.mpSource->mViewPoints.size();
    path.mSound = i < paths.size() && paths[i].mName == path.mpSource->mName;
    path.mNumSoundViews = path.mSound ? CountSameViews(*path.mpSource, paths[i]) : 0;
    if (!path.mSound) {
      reporter.Report(path.mInput, path.mpSource->mName, "the path is missing");
    } else if (path.mNumSoundViews != numViews || paths[i].mViewPoints.size() != numViews) {
      reporter.Report(path.mInput, path.mpSource->mName, "the views of the path differ");
    }
  }
  if (paths.size() <= model.mPaths.size()) return;
  const std::size_t numExtra = paths.size() - model.mPaths.size();
  reporter.Report("the output has " + Plural(numExtra, "unexpected path"));
}

}  // namespace

void VerifyViews(ExpectedModel& model, const QovRyx::Tree& output, FaultReporter& reporter) {
  const bool hasViews = output.HasViewPoints();
  if (!model.mCurrentView) {
    if (hasViews) reporter.Report("the output has views, but no input has any");
    return;
  }
  auto& view = *model.mCurrentView;
  auto& sequencer = *model.mSequencer;
  view.mSound = hasViews && IsSameRecord(*view.mpSource, output.GetViewPoint());
  sequencer.mSound = hasViews && IsSameRecord(*sequencer.mpSource, output.GetSequencerData());
  if (!view.mSound) reporter.Report(view.mInput, view.mpSource->mName, "the current view differs");
  if (!sequencer.mSound) {
    reporter.Report(sequencer.mInput, sequencer.mpSource->mName, "the sequencer differs");
  }
  VerifyPaths(model, output.GetViewPointPaths(), reporter);
}

void VerifyHistory(ExpectedModel& model, const QovRyx::Tree& output, FaultReporter& reporter) {
  const auto& history = output.GetModifiers();
  for (std::size_t i = 0; i < model.mHistory.size(); ++i) {
    auto& entry = model.mHistory[i];
    entry.mSound = i < history.size() && IsSameEntry(*entry.mpSource, history[i]);
    if (!entry.mSound) {
      reporter.Report(entry.mInput, entry.mpSource->mApplication,
                      "an entry of the history is missing");
    }
  }
  model.mNumSoundNewHistory = 0;
  for (std::size_t i = 0; i < model.mNewHistory.size(); ++i) {
    const std::size_t k = model.mHistory.size() + i;
    if (k < history.size() && IsNewEntry(model.mNewHistory[i], history[k])) {
      ++model.mNumSoundNewHistory;
    } else {
      reporter.Report("the history has no entry of the merge");
    }
  }
  if (history.size() > model.mHistory.size() + model.mNewHistory.size()) {
    reporter.Report("the history has unexpected entries");
  }
}

}  // namespace Qov::Tools
