#include "picture/Panels.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <tuple>
#include <utility>

#include "Palette.h"
#include "Qov/Util/Raise.h"
#include "Terminal.h"
#include "picture/Ticks.h"

namespace Qov::Tools {
namespace {

constexpr std::size_t kNumColours = 256;
/// Length of the longest displacement, in diagonals of the box, if the user leaves the scale open.
constexpr double kVisibleShare = 0.1;

/// Returns the number 1, 2 or 5 times a power of ten that is nearest by ratio.
double RoundScale(double scale) {
  const double power = std::pow(10.0, std::floor(std::log10(scale)));
  double best = power;
  for (const double factor : {2.0, 5.0, 10.0}) {
    const double candidate = factor * power;
    if (std::abs(std::log(candidate / scale)) < std::abs(std::log(best / scale))) best = candidate;
  }
  return best;
}

double ChooseScale(const SceneExtent& extent) {
  const double scale = kVisibleShare * 2 * extent.mBox.GetRadius() / extent.mLargestShift;
  return std::isfinite(scale) && scale > 0 ? RoundScale(scale) : 1;
}

}  // namespace

void Panels::AddModel(const NamedModel& model, bool onlyFirst) {
  ModelView view(model.mTree, mRequest.mView, mReport.mNotes);
  ModelScenes scenes = ChooseScenes(model.mTree, mRequest, view, onlyFirst);
  mReport.mNotes.insert(mReport.mNotes.end(), scenes.mNotes.begin(), scenes.mNotes.end());
  mReport.mIsComplete = mReport.mIsComplete && scenes.mIsComplete;
  mReport.mView = view.GetName();
  for (Scene& scene : scenes.mScenes) {
    Panel panel;
    panel.mModel = mModels.size();
    if (const ExportResult* result = FindSceneResult(scene, scene.mResult)) {
      panel.mUnit = FindUnit(*result);
      panel.mComponent = DescribeComponent(*result, scene.mComponent);
    }
    panel.mScene = std::move(scene);
    mPanels.push_back(std::move(panel));
  }
  mModels.push_back({model.mName, std::move(view), ScenePainter(scenes.mpMeshes), {}, 0});
  if (mPanels.size() <= kMostScenes) return;
  Util::Raise(
      "tools/picture/Panels", Util::Exception::ErrorType::OutOfBounds,
      fmt::format("a sheet shows at most {} pictures: choose fewer models, results or steps",
                  kMostScenes));
}

void Panels::Compare(const NamedModel& other) {
  const ModelView view(other.mTree, "iso", mReport.mNotes);
  mpOther = std::make_unique<ModelScenes>(ChooseScenes(other.mTree, mRequest, view, true));
  for (const std::string& note : mpOther->mNotes) {
    mReport.mNotes.push_back(Escape(other.mName, {}) + ": " + note);
  }
  mReport.mIsComplete = mReport.mIsComplete && mpOther->mIsComplete;
  ShowDifference(mPanels[0].mScene, mModels[0].mPainter, mpOther->mScenes[0], *mpOther->mpMeshes);
  const auto describe = [](const std::string& model, const Scene& scene) {
    return scene.mStep.empty() ? model : fmt::format("{} ({})", model, scene.mStep);
  };
  mPanels[0].mCaption = fmt::format("{} minus {}", describe(other.mName, mpOther->mScenes[0]),
                                    describe(mModels[0].mName, mPanels[0].mScene));
  const std::string& first = mPanels[0].mScene.mStep;
  const std::string& second = mpOther->mScenes[0].mStep;
  if (first == second) return;
  mReport.mNotes.push_back(fmt::format("step {} of the second model is compared with step {}",
                                       Escape(second, {}), Escape(first, {})));
}

void Panels::Measure() {
  for (Panel& panel : mPanels) {
    PanelModel& model = GetModel(panel);
    const SceneExtent extent = model.mPainter.Measure(panel.mScene, 0);
    if (!extent.mRange.IsEmpty()) panel.mValues = extent.mRange;
    model.mExtent.Include(extent);
    if (mModels.size() > 1) model.mPainter.Clear();
  }
  if (!mRequest.mDeform.empty()) MeasureDeformed();
  ChooseColours();
  MakeCaptions();
}

void Panels::MeasureDeformed() {
  for (PanelModel& model : mModels) {
    model.mScale = mRequest.mScale ? *mRequest.mScale : ChooseScale(model.mExtent);
    model.mExtent.mBox = {};
  }
  for (const Panel& panel : mPanels) {
    PanelModel& model = GetModel(panel);
    model.mExtent.mBox.Include(model.mPainter.Measure(panel.mScene, model.mScale).mBox);
  }
}

void Panels::ChooseColours() {
  std::map<std::string, ScalarRange> ranges;
  for (const Panel& panel : mPanels) {
    ScalarRange& range = ranges[panel.mUnit];
    if (!panel.mValues) continue;
    range.Include(panel.mValues->mLeast);
    range.Include(panel.mValues->mGreatest);
  }
  for (const auto& [unit, range] : ranges) {
    double low = range.mLeast;
    double high = range.mGreatest;
    const bool isSigned = IsDifference() && low < 0;
    if (isSigned) {
      high = std::max(std::abs(low), std::abs(high));
      low = -high;
    }
    if (mRequest.mRange) std::tie(low, high) = *mRequest.mRange;
    const bool isCentred = isSigned && low == -high;  // the middle colour stands for 0
    mColours.emplace(unit, isCentred ? ColourScale(low, high, MakeDivergingPalette(kNumColours))
                                     : ColourScale(low, high, kNumColours));
  }
}

void Panels::MakeCaptions() {
  std::set<std::string> results;
  for (const Panel& panel : mPanels) results.insert(panel.mScene.mResult);
  for (Panel& panel : mPanels) {
    const Scene& scene = panel.mScene;
    std::vector<std::string> words;
    if (!panel.mCaption.empty()) words.push_back(panel.mCaption);
    if (mModels.size() > 1) words.push_back(GetModel(panel).mName);
    if (results.size() > 1) words.push_back(scene.mResult);
    const bool usesStep = !scene.mResult.empty() || !scene.mDeform.empty() ||
                          mPanels.size() > mModels.size();  // a sheet of steps
    if (usesStep && !scene.mStep.empty() && !IsDifference()) words.push_back(scene.mStep);
    if (!scene.mDeform.empty()) {
      words.push_back(
          fmt::format("deformed: {} x {}", scene.mDeform, ShortNumber(GetModel(panel).mScale)));
    }
    panel.mCaption = Escape(fmt::format("{}", fmt::join(words, ", ")), {});
  }
}

bool Panels::LacksValues() const {
  return std::any_of(mModels.begin(), mModels.end(),
                     [](const PanelModel& model) { return model.mExtent.mLacksValues; });
}

}  // namespace Qov::Tools
