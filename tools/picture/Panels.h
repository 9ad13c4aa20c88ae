#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "picture/DrawPicture.h"
#include "picture/SceneChoice.h"

namespace Qov::Tools {

/// A model in a picture, and what its panels share.
struct PanelModel {
  std::string mName;
  ModelView mView;
  ScenePainter mPainter;
  SceneExtent mExtent;
  double mScale = 0;  ///< Of the deformation.
};

/// One of the views in an image.
struct Panel {
  std::size_t mModel = 0;  ///< Position in Panels::mModels.
  Scene mScene;
  std::string mUnit;
  std::string mComponent;
  std::optional<ScalarRange> mValues;
  std::string mCaption;
};

/// The panels of an image: chosen, measured, with scales of colours.
class Panels {
 public:
  Panels(const PictureRequest& request, PictureReport& report)
      : mRequest(request), mReport(report) {}

  /// Adds the panels of a model; with `onlyFirst`, the first one. Raises the errors of
  /// ChooseScenes, and OutOfBounds for too many panels.
  void AddModel(const NamedModel& model, bool onlyFirst);
  /// Turns the only panel into one of differences to another model.
  void Compare(const NamedModel& other);
  /// Reads all meshes and values, and finds boxes, scales of deformations and of colours, captions.
  void Measure();

  PanelModel& GetModel(const Panel& panel) { return mModels[panel.mModel]; }
  const std::vector<PanelModel>& GetModels() const { return mModels; }
  const std::vector<Panel>& GetPanels() const { return mPanels; }
  const ColourScale& GetColours(const Panel& panel) const { return mColours.at(panel.mUnit); }
  bool IsDifference() const { return mpOther != nullptr; }
  bool LacksValues() const;
  /// Returns true if one scalar bar explains all panels.
  bool HasOneScale() const { return mColours.size() == 1; }

 private:
  void MeasureDeformed();
  void ChooseColours();
  void MakeCaptions();

  const PictureRequest& mRequest;
  PictureReport& mReport;
  std::vector<PanelModel> mModels;
  std::vector<Panel> mPanels;
  std::unique_ptr<ModelScenes> mpOther;         ///< The second model of a difference.
  std::map<std::string, ColourScale> mColours;  ///< By unit.
};

}  // namespace Qov::Tools
