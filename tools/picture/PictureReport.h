#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Json.h"
#include "Output.h"
#include "picture/Difference.h"
#include "picture/Scene.h"

namespace Qov::Tools {

/// A part of a panel.
struct ReportedPart {
  std::uint32_t mId = 0;
  std::string mName;
  Colour mColour{};
  bool mIsHidden = false;
  DrawnPart mDrawn;
};

/// One view of a model in a picture.
struct ReportedPanel {
  std::string mModel;
  std::string mResult;  ///< Base name; empty for colours of parts.
  std::string mComponent;
  std::string mUnit;
  std::string mStep;
  std::optional<std::pair<double, double>> mRange;  ///< Of the colours.
  std::optional<ScalarRange> mValues;               ///< Range of the values of the panel.
  double mScale = 0;                                ///< Of the deformation.
  std::vector<ReportedPart> mParts;
  std::optional<LargestDifference> mLargest;
};

/// What was drawn.
struct PictureReport {
  std::string mPath;  ///< Empty for a terminal.
  std::uint32_t mWidth = 0;
  std::uint32_t mHeight = 0;
  std::uint64_t mNumBytes = 0;
  std::string mView;
  std::string mDeform;
  std::vector<ReportedPanel> mPanels;
  std::vector<std::string> mNotes;
  bool mIsComplete = true;  ///< False if a chosen geometry or result could not be drawn.
};

/// Prints a few lines.
void PrintSummary(const PictureReport& report, Output& output);

/// Returns the document of docs/json/picture.md.
Json PictureJson(const PictureReport& report);

}  // namespace Qov::Tools
