#include "picture/DrawPicture.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Terminal.h"
#include "picture/Legend.h"
#include "picture/Panels.h"
#include "picture/ScalarBar.h"
#include "picture/Text.h"
#include "picture/Ticks.h"

namespace Qov::Tools {
namespace {

/// Returns the height of texts in pixels for an image.
double ChooseImageTextSize(const PictureRequest& request) {
  return std::clamp(std::min(request.mWidth, request.mHeight) / 48.0, 10.0, 48.0);
}

/// Draws panels into an image, with what explains them:
///
///   +-----------+-----------+-------+
///   | caption   | caption   |       |
///   |  panel    |  panel    | bar   |
///   |           |           | or    |
///   +-----------+-----------+ legend|
///   | ...       | ...       |       |
///   |           |           | axes  |
///   +-----------+-----------+-------+
class PanelPainter {
 public:
  PanelPainter(const PictureRequest& request, PictureReport& report, Panels& panels)
      : mRequest(request),
        mReport(report),
        mPanels(panels),
        mImage(request.mWidth, request.mHeight, request.mBackground),
        mInk(InkFor(request.mBackground)),
        mTextSize(ChooseImageTextSize(request)),
        mMargin(std::max(2, static_cast<int>(mTextSize / 2))) {}

  Image Draw() {
    const auto& panels = mPanels.GetPanels();
    const bool hasAxes = panels.size() == 1 && std::min(mRequest.mWidth, mRequest.mHeight) >= 240;
    Rectangle area = mImage.GetArea().Shrink(mMargin);
    mAxes = hasAxes ? CornerOf(area) : Rectangle{};
    Rectangle column = area;
    column.mHeight -= mAxes.mHeight;
    const int before = area.mWidth;
    if (mPanels.HasOneScale() && !panels[0].mScene.mResult.empty()) {
      area.mWidth = DrawBar(panels[0], column, mTextSize);
    } else if (panels.size() == 1 && panels[0].mScene.mResult.empty()) {
      area.mWidth = DrawLegend(column);
    }
    if (hasAxes && area.mWidth < before) mAxes.mX = area.mX + area.mWidth + mMargin;
    DrawGrid(area);
    return std::move(mImage);
  }

 private:
  /// Returns the place of the axes in the lower left corner.
  Rectangle CornerOf(const Rectangle& area) const {
    const int side = std::clamp(std::min(area.mWidth, area.mHeight) / 7, 48, 160);
    return {area.mX, area.mY + area.mHeight - side, side, side};
  }

  /// Draws a scalar bar at the right end of the area. Returns the width of the rest.
  int DrawBar(const Panel& panel, const Rectangle& area, double textSize) {
    const ColourScale& colours = mPanels.GetColours(panel);
    ScalarBar bar;
    bar.mTitle = Escape(panel.mScene.mResult, {});
    if (!panel.mComponent.empty()) bar.mTitle += ", " + Escape(panel.mComponent, {});
    bar.mUnit = Escape(panel.mUnit, {});
    bar.mNoValues = mPanels.LacksValues();
    const int width = std::min(ScalarBarWidth(bar, colours, textSize), area.mWidth * 2 / 5);
    const int rest = area.mWidth - width - mMargin;
    DrawScalarBar(mImage, {area.mX + rest + mMargin, area.mY, width, area.mHeight}, bar, colours,
                  textSize, mInk);
    return rest;
  }

  /// Draws the names of the parts at the right end of the area, if there are several. Returns the
  /// width of the rest.
  int DrawLegend(const Rectangle& area) {
    const Scene& scene = mPanels.GetPanels()[0].mScene;
    std::vector<LegendEntry> entries;
    for (std::size_t i = 0; i < scene.mLooks.size(); ++i) {
      if (scene.mLooks[i].mIsHidden) continue;
      entries.push_back({Escape(scene.mContent.mParts[i].mName, {}), scene.mLooks[i].mColour});
    }
    if (entries.size() < 2) return area.mWidth;
    const int width = LegendWidth(entries, mTextSize, area.mWidth / 3);
    const int rest = area.mWidth - width - mMargin;
    Tools::DrawLegend(mImage, {area.mX + rest + mMargin, area.mY, width, area.mHeight}, entries,
                      mTextSize, mInk);
    return rest;
  }

  /// Returns the number of columns for which the smaller side of the panels is greatest.
  static std::size_t ChooseColumns(std::size_t numPanels, const Rectangle& area) {
    std::size_t best = 1;
    int bestSide = 0;
    for (std::size_t columns = 1; columns <= numPanels; ++columns) {
      const std::size_t rows = (numPanels + columns - 1) / columns;
      const int side =
          std::min(area.mWidth / static_cast<int>(columns), area.mHeight / static_cast<int>(rows));
      if (side <= bestSide) continue;
      bestSide = side;
      best = columns;
    }
    return best;
  }

  void DrawGrid(const Rectangle& area) {
    const std::size_t numPanels = mPanels.GetPanels().size();
    const std::size_t numColumns = ChooseColumns(numPanels, area);
    const std::size_t numRows = (numPanels + numColumns - 1) / numColumns;
    const auto share = [](int length, std::size_t i, std::size_t count) {
      return static_cast<int>(static_cast<std::size_t>(length) * i / count);
    };
    for (std::size_t i = 0; i < numPanels; ++i) {
      const std::size_t column = i % numColumns;
      const std::size_t row = i / numColumns;
      const int left = share(area.mWidth, column, numColumns);
      const int top = share(area.mHeight, row, numRows);
      Rectangle place = {area.mX + left, area.mY + top,
                         share(area.mWidth, column + 1, numColumns) - left,
                         share(area.mHeight, row + 1, numRows) - top};
      if (numPanels > 1) place = place.Shrink(std::max(1, mMargin / 3));
      DrawPanel(mPanels.GetPanels()[i], place);
    }
  }

  /// Returns the size of texts that belong to a panel, which is less in small panels.
  double ChooseTextSize(const Rectangle& panel) const {
    if (mPanels.GetPanels().size() == 1) return mTextSize;
    return std::clamp(std::min(panel.mWidth, panel.mHeight) / 12.0, 9.0, std::max(9.0, mTextSize));
  }

  void DrawPanel(const Panel& panel, Rectangle area) {
    const double textSize = ChooseTextSize(area);
    if (!panel.mCaption.empty()) {
      const int height = LineHeight(textSize);
      DrawText(mImage, area.mX, area.mY, CutText(panel.mCaption, textSize, area.mWidth), textSize,
               mInk);
      area.mY += height;
      area.mHeight -= height;
    }
    if (!mPanels.HasOneScale()) area.mWidth = DrawBar(panel, area, textSize);
    area.mWidth = std::max(area.mWidth, 1);
    area.mHeight = std::max(area.mHeight, 1);
    PanelModel& model = mPanels.GetModel(panel);
    const Camera camera = model.mView.MakeCamera(model.mExtent.mBox, area);
    model.mPainter.Prepare(panel.mScene, model.mScale, mReport.mNotes);
    std::vector<DrawnPart> drawn;
    std::optional<LargestDifference> largest;
    {
      Rasteriser rasteriser(mImage, camera);
      drawn = model.mPainter.Draw(panel.mScene, model.mScale, mPanels.GetColours(panel), rasteriser,
                                  mReport.mNotes);
      if (mPanels.IsDifference()) {
        largest = FindLargestDifference(panel.mScene, model.mPainter, model.mScale);
      }
      const bool isVisible = largest && rasteriser.IsVisible(largest->mPlace);
      rasteriser.Finish();
      if (largest) MarkLargest(panel, camera, *largest, isVisible);
    }
    if (mAxes.mWidth > 0) DrawAxes(mImage, mAxes, camera, mTextSize);
    Report(panel, drawn, std::move(largest));
    if (mPanels.GetModels().size() > 1) model.mPainter.Clear();
  }

  void MarkLargest(const Panel& panel, const Camera& camera, const LargestDifference& largest,
                   bool isVisible) {
    const auto place = camera.Project(largest.mPlace);
    if (!place) return;
    std::string label = DescribePlace(largest) + ": " + ShortNumber(largest.mValue);
    if (!panel.mUnit.empty()) label += " " + Escape(panel.mUnit, {});
    if (!isVisible) label += " (hidden)";
    DrawMarker(mImage, place->mX, place->mY, label, mTextSize, mInk, mRequest.mBackground);
  }

  void Report(const Panel& panel, const std::vector<DrawnPart>& drawn,
              std::optional<LargestDifference> largest) {
    const PanelModel& model = mPanels.GetModel(panel);
    const Scene& scene = panel.mScene;
    ReportedPanel reported{model.mName, scene.mResult,     panel.mComponent, panel.mUnit,
                           scene.mStep, std::nullopt,      panel.mValues,    model.mScale,
                           {},          std::move(largest)};
    const ColourScale& colours = mPanels.GetColours(panel);
    if (!scene.mResult.empty() && colours.HasRange()) {
      reported.mRange = {colours.GetLow(), colours.GetHigh()};
    }
    for (std::size_t i = 0; i < drawn.size(); ++i) {
      const ExportPart& part = scene.mContent.mParts[i];
      reported.mParts.push_back(
          {part.mId, part.mName, scene.mLooks[i].mColour, scene.mLooks[i].mIsHidden, drawn[i]});
    }
    mReport.mPanels.push_back(std::move(reported));
  }

  const PictureRequest& mRequest;
  PictureReport& mReport;
  Panels& mPanels;
  Image mImage;
  const Colour mInk;
  const double mTextSize;
  const int mMargin;
  Rectangle mAxes;  ///< Place of the axes; no width if there are none.
};

Image Paint(const PictureRequest& request, PictureReport& report, Panels& panels) {
  report.mWidth = request.mWidth;
  report.mHeight = request.mHeight;
  report.mDeform = request.mDeform;
  panels.Measure();
  Image image = PanelPainter(request, report, panels).Draw();
  std::unordered_set<std::string> seen;
  std::erase_if(report.mNotes, [&](const std::string& note) { return !seen.insert(note).second; });
  return image;
}

}  // namespace

Image DrawPicture(const NamedModel& model, const PictureRequest& request, PictureReport& report) {
  Panels panels(request, report);
  panels.AddModel(model, true);
  return Paint(request, report, panels);
}

Image DrawSheet(std::span<const NamedModel> models, const PictureRequest& request,
                PictureReport& report) {
  Panels panels(request, report);
  for (const NamedModel& model : models) panels.AddModel(model, false);
  return Paint(request, report, panels);
}

Image DrawDifference(const NamedModel& first, const NamedModel& second,
                     const PictureRequest& request, PictureReport& report) {
  Panels panels(request, report);
  panels.AddModel(first, true);
  panels.Compare(second);
  return Paint(request, report, panels);
}

}  // namespace Qov::Tools
