#include "sample/Views.h"

#include <bit>
#include <memory>
#include <utility>

namespace Qov::Tools {
namespace {

using QovRyx::ViewPoint;
using QovRyx::ViewPointPath;

/// Returns a number as views and actions store it.
std::uint32_t Bits(float value) { return std::bit_cast<std::uint32_t>(value); }

/// Returns a view from `eye` to the origin, with the part moved up by `apart`.
ViewPoint MakeView(const std::string& name, const QovRyx::Vector3& eye, const std::string& part,
                   float apart) {
  ViewPoint view;
  view.mName = name;
  view.mPoint1 = eye;
  view.mPoint3 = {0, 0, 1};
  view.mViewState.mCaeState.mName1 = "Stress";
  view.mViewState.mHiddenState.mHiddenEntities[part] = 0;
  view.mViewState.mXplodeState.mOffsets[part] = {0, 0, apart};
  view.mViewState.mMiscState.mText = name;
  return view;
}

ViewPointPath MakeWalk(const std::string& name, const std::string& part) {
  return {"Walk round " + name,
          {MakeView("Front", {0, -500, 100}, part, 0), MakeView("Right", {500, 0, 100}, part, 0),
           MakeView("Back", {0, 500, 100}, part, 0), MakeView("Left", {-500, 0, 100}, part, 0)}};
}

ViewPointPath MakeDetails(const std::string& name, const std::string& part) {
  return {"Details of " + name,
          {MakeView("Close", {60, -60, 40}, part, 0), MakeView("Apart", {60, -60, 40}, part, 25)}};
}

/// Returns a rotation and a change to a view.
std::vector<std::unique_ptr<QovRyx::BasicAction>> MakeActions() {
  auto rotation = std::make_unique<QovRyx::RotateAction>();
  rotation->mVector = {Bits(0), Bits(0), Bits(1)};
  rotation->mValue = Bits(90);
  auto view = std::make_unique<QovRyx::ApplyViewPointAction>();
  view->mViewPointName = "Close";
  std::vector<std::unique_ptr<QovRyx::BasicAction>> actions;
  actions.push_back(std::move(rotation));
  actions.push_back(std::move(view));
  return actions;
}

QovRyx::SequencerData MakeSequencer(const std::string& name) {
  QovRyx::SequencerData sequencer;
  sequencer.mName = "Show of " + name;
  sequencer.mActions.mSlots = MakeActions();
  auto& steps = sequencer.mSequences["Main"];
  for (std::uint32_t i = 0; i < sequencer.mActions.mSlots.size(); ++i) {
    QovRyx::Action settings;
    settings.mName = "Step " + std::to_string(i + 1);
    settings.mIndices = {i};
    sequencer.mActionSettings.push_back(settings);
    steps.push_back({{}, i, i * 10, 10});
  }
  return sequencer;
}

}  // namespace

void AddViews(QovRyx::Tree& tree, const std::string& name, const std::string& part) {
  tree.SetHasViewPoints(true);
  tree.GetViewPoint() = MakeView("Home of " + name, {300, -400, 200}, part, 0);
  tree.GetViewPointPaths().push_back(MakeWalk(name, part));
  tree.GetViewPointPaths().push_back(MakeDetails(name, part));
  tree.GetSequencerData() = MakeSequencer(name);
}

}  // namespace Qov::Tools
