#include "picture/PictureReport.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <utility>

#include "Plural.h"
#include "ValueText.h"
#include "picture/Ticks.h"

namespace Qov::Tools {
namespace {

std::string ColourText(const Colour& colour) {
  return fmt::format("#{:02x}{:02x}{:02x}", colour[0], colour[1], colour[2]);
}

/// Returns the shortest number that reads back as the value, which is often a float.
Json ShortJson(double value) {
  const auto single = static_cast<float>(value);
  return double{single} == value ? JsonFloat(single) : JsonNumber(value);
}

Json RangeJson(double low, double high) {
  return {{"least", ShortJson(low)}, {"greatest", ShortJson(high)}};
}

Json PartJson(const ReportedPart& part) {
  return {{"id", part.mId},
          {"name", JsonText(part.mName)},
          {"hidden", part.mIsHidden},
          {"colour", ColourText(part.mColour)},
          {"coloured", part.mDrawn.mHasValues},
          {"triangles", part.mDrawn.mNumTriangles},
          {"lines", part.mDrawn.mNumLines},
          {"points", part.mDrawn.mNumPoints}};
}

Json LargestJson(const LargestDifference& largest) {
  return {
      {"value", ShortJson(largest.mValue)},
      {"geometry", JsonText(largest.mPart)},
      {"at", largest.mIsCell ? "element" : "node"},
      {"id", largest.mHasId ? Json(largest.mId) : Json(nullptr)},
      {"place",
       {ShortJson(largest.mPlace[0]), ShortJson(largest.mPlace[1]), ShortJson(largest.mPlace[2])}}};
}

Json TextOrNull(const std::string& text) {
  return text.empty() ? Json(nullptr) : Json(JsonText(text));
}

Json PanelJson(const ReportedPanel& panel) {
  Json document = {{"model", JsonText(panel.mModel)},
                   {"result", TextOrNull(panel.mResult)},
                   {"component", TextOrNull(panel.mComponent)},
                   {"unit", TextOrNull(panel.mUnit)},
                   {"step", TextOrNull(panel.mStep)},
                   {"range", nullptr},
                   {"values", nullptr},
                   {"scale", JsonNumber(panel.mScale)},
                   {"largest", nullptr},
                   {"geometries", Json::array()}};
  if (panel.mRange) document["range"] = RangeJson(panel.mRange->first, panel.mRange->second);
  if (panel.mValues) {
    document["values"] = RangeJson(panel.mValues->mLeast, panel.mValues->mGreatest);
  }
  if (panel.mLargest) document["largest"] = LargestJson(*panel.mLargest);
  for (const ReportedPart& part : panel.mParts) document["geometries"].push_back(PartJson(part));
  return document;
}

/// Returns "Stress (magnitude) of LC1: -1.2 to 3.4 MPa".
std::string ValuesText(const ReportedPanel& panel, const TextStyle& style) {
  std::string text = panel.mLargest ? "Difference of " : "";
  text += Escape(panel.mResult, style);
  if (!panel.mComponent.empty()) text += " (" + Escape(panel.mComponent, style) + ")";
  if (!panel.mStep.empty()) text += " of " + Escape(panel.mStep, style);
  if (!panel.mValues) return text + ": no values";
  text += fmt::format(": {} to {}", ShortNumber(panel.mValues->mLeast),
                      ShortNumber(panel.mValues->mGreatest));
  return text + (panel.mUnit.empty() ? "" : " " + Escape(panel.mUnit, style));
}

}  // namespace

void PrintSummary(const PictureReport& report, Output& output) {
  const TextStyle& style = output.GetStyle();
  std::uint64_t numTriangles = 0;
  std::size_t numParts = 0;
  for (const ReportedPanel& panel : report.mPanels) {
    for (const ReportedPart& part : panel.mParts) {
      numTriangles += part.mDrawn.mNumTriangles;
      numParts += part.mIsHidden ? 0 : 1;
    }
  }
  output.Line(fmt::format("Wrote {}: {} x {} pixels, {}, {}, {}", Escape(report.mPath, style),
                          report.mWidth, report.mHeight, SizeText(report.mNumBytes),
                          numParts == 1 ? "1 geometry" : fmt::format("{} geometries", numParts),
                          Plural(numTriangles, "triangle")));
  for (const ReportedPanel& panel : report.mPanels) {
    if (!panel.mResult.empty()) output.Line(ValuesText(panel, style));
    if (!panel.mLargest) continue;
    output.Line(fmt::format("Largest difference: {} at {}", ShortNumber(panel.mLargest->mValue),
                            DescribePlace(*panel.mLargest)));
  }
  if (!report.mDeform.empty()) {
    output.Line(fmt::format("Deformed by {} times {}", ShortNumber(report.mPanels[0].mScale),
                            Escape(report.mDeform, style)));
  }
}

Json PictureJson(const PictureReport& report) {
  Json document = MakeJsonDocument("picture");
  document["path"] = TextOrNull(report.mPath);
  document["width"] = report.mWidth;
  document["height"] = report.mHeight;
  document["bytes"] = report.mNumBytes;
  document["view"] = JsonText(report.mView);
  document["deform"] = TextOrNull(report.mDeform);
  document["complete"] = report.mIsComplete;
  document["panels"] = Json::array();
  for (const ReportedPanel& panel : report.mPanels) document["panels"].push_back(PanelJson(panel));
  document["notes"] = report.mNotes;
  return document;
}

}  // namespace Qov::Tools
