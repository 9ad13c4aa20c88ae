#include "sample/Views.h"

#include <array>
#include <bit>
#include <memory>
#include <utility>

namespace Qov::Tools {
namespace {

using QovRyx::ViewPoint;
using QovRyx::ViewPointPath;

/// Views and actions carry their numbers as bits.
std::uint32_t Bits(float value) { return std::bit_cast<std::uint32_t>(value); }

template <class... Floats>
std::array<std::uint32_t, sizeof...(Floats)> BitsOf(Floats... values) {
  return {Bits(values)...};
}

/// A look from `eye` at the origin, with the part pulled out by `apart`.
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

template <class T>
std::unique_ptr<T> MakeTurnOrMove(float x, float y, float z, float amount) {
  auto action = std::make_unique<T>();
  action->mVector = BitsOf(x, y, z);
  action->mValue = Bits(amount);
  return action;
}

/// One of every kind.
std::vector<std::unique_ptr<QovRyx::BasicAction>> MakeActions() {
  auto place = std::make_unique<QovRyx::TransformAction>();
  place->mVector = BitsOf(0.0F, 5.0F, 0.0F);
  place->mQuad = BitsOf(1.0F, 0.0F, 0.0F, 0.0F);
  auto colour = std::make_unique<QovRyx::ApplyColorAction>();
  colour->mValues = {Bits(0.9F), Bits(0.2F), Bits(0.1F), Bits(1.0F)};
  auto view = std::make_unique<QovRyx::ApplyViewPointAction>();
  view->mViewPointName = "Close";
  auto audio = std::make_unique<QovRyx::PlayAudioAction>();
  audio->mAudio = "bell.wav";
  std::vector<std::unique_ptr<QovRyx::BasicAction>> actions;
  actions.push_back(MakeTurnOrMove<QovRyx::RotateAction>(0, 0, 1, 90));
  actions.push_back(MakeTurnOrMove<QovRyx::MoveAction>(1, 0, 0, 25));
  actions.push_back(std::move(place));
  actions.push_back(std::move(colour));
  actions.push_back(std::move(view));
  actions.push_back(std::move(audio));
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
