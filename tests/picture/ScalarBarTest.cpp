#include "picture/ScalarBar.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <vector>

#include "picture/Legend.h"
#include "picture/Text.h"

namespace Qov::Tools {
namespace {

constexpr Colour kSheet = {255, 255, 255};
constexpr Colour kInk = {0, 0, 0};
constexpr double kText = 14;
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

/// Returns the smallest rectangle around what has been drawn.
Rectangle DrawnArea(const Image& image) {
  int left = image.GetWidth();
  int right = 0;
  int top = image.GetHeight();
  int bottom = 0;
  for (int y = 0; y < image.GetHeight(); ++y) {
    for (int x = 0; x < image.GetWidth(); ++x) {
      if (image.At(x, y) == kSheet) continue;
      left = std::min(left, x);
      right = std::max(right, x + 1);
      top = std::min(top, y);
      bottom = std::max(bottom, y + 1);
    }
  }
  return {left, top, right - left, bottom - top};
}

/// Returns true if there is a filled area of the colour, not only smooth edges of a text.
bool HasColour(const Image& image, Colour colour) {
  const auto& pixels = image.GetPixels();
  return std::count(pixels.begin(), pixels.end(), colour) > 100;
}

TEST(ColourScale, MapsRangesToThePalette) {
  const ColourScale scale(-2, 6);
  EXPECT_EQ(scale.ColourOf(-2), scale.GetPalette().front());
  EXPECT_EQ(scale.ColourOf(-9), scale.GetPalette().front());
  EXPECT_EQ(scale.ColourOf(2), scale.GetPalette()[128]);
  EXPECT_EQ(scale.ColourOf(6), scale.GetPalette().back());
  EXPECT_EQ(scale.ColourOf(kNoNumber), kNoValueColour);
  const ColourScale constant(3, 3);
  EXPECT_EQ(constant.ColourOf(3), constant.GetPalette()[128]);
  EXPECT_EQ(constant.ColourOf(2), constant.GetPalette().front());
  const ColourScale huge(-1.7e308, 1.7e308);
  EXPECT_EQ(huge.ColourOf(0), huge.GetPalette()[128]);
  for (const auto& [low, high] :
       {std::pair{kNoNumber, 1.0}, std::pair{1.0, 0.0}, std::pair{0.0, HUGE_VAL}}) {
    EXPECT_FALSE(ColourScale(low, high).HasRange());
    EXPECT_EQ(ColourScale(low, high).ColourOf(0.5), kNoValueColour);
  }
  std::set<Colour> parts;
  for (std::size_t i = 0; i < 2 * kNumPartColours; ++i) parts.insert(PartColour(i));
  EXPECT_EQ(parts.size(), kNumPartColours);
}

TEST(ScalarBar, StaysInsideOfItsAreaForAnyRange) {
  struct Row {
    double mLow, mHigh;
    const char* mTitle;
    bool mNoValues;
    bool mHasColours;
  };
  const std::vector<Row> rows = {
      {0, 1, "Stress", false, true},
      {-1.23456e-12, 9.87e30, "Displacement of the upper part, magnitude", true, true},
      {5, 5, "", true, true},
      {1, 0, "Nothing", false, false},
  };
  for (const Row& row : rows) {
    for (const int height : {10, 60, 300}) {
      const ColourScale scale(row.mLow, row.mHigh, 16);
      const ScalarBar bar = {row.mTitle, "N/mm²", row.mNoValues};
      const int width = ScalarBarWidth(bar, scale, kText);
      Image image(static_cast<std::uint32_t>(width + 40), 400, kSheet);
      DrawScalarBar(image, {20, 40, width, height}, bar, scale, kText, kInk);
      const Rectangle drawn = DrawnArea(image);
      EXPECT_GE(drawn.mX, 20) << row.mTitle;
      EXPECT_LE(drawn.mX + drawn.mWidth, 20 + width + 1) << row.mTitle;
      if (height < 300) continue;
      EXPECT_GE(drawn.mY, 40) << row.mTitle;
      EXPECT_LE(drawn.mY + drawn.mHeight, 340) << row.mTitle;
      EXPECT_EQ(HasColour(image, scale.GetPalette()[8]), row.mHasColours) << row.mTitle;
      EXPECT_EQ(HasColour(image, kNoValueColour), row.mNoValues || !row.mHasColours) << row.mTitle;
    }
  }
}

TEST(Legend, ShowsAsManyEntriesAsFitAndCountsTheOthers) {
  std::vector<LegendEntry> entries;
  for (std::size_t i = 0; i < kNumPartColours; ++i) {
    entries.push_back({"Part with a name that is too long " + std::to_string(i), PartColour(i)});
  }
  for (const int height : {400, 100, 30, 5}) {
    Image image(300, 440, kSheet);
    DrawLegend(image, {30, 20, 150, height}, entries, kText, kInk);
    const auto shown = static_cast<std::size_t>(
        std::count_if(entries.begin(), entries.end(),
                      [&](const LegendEntry& entry) { return HasColour(image, entry.mColour); }));
    EXPECT_EQ(shown, height == 400 ? 12U : height == 100 ? 4U : 0U);
    if (height < 20) continue;
    const Rectangle drawn = DrawnArea(image);
    EXPECT_GE(drawn.mX, 30);
    EXPECT_LE(drawn.mX + drawn.mWidth, 181);
    EXPECT_GE(drawn.mY, 20);
    EXPECT_LE(drawn.mY + drawn.mHeight, 20 + height);
  }
  EXPECT_EQ(LegendWidth(entries, kText, 120), 120);
}

TEST(Legend, KeepsLabelsOfMarkersInsideOfTheImage) {
  const std::string label = "largest difference 1.5e-05";
  const int length = static_cast<int>(MeasureText(label, kText));
  for (const double x : {0.0, 200.0, 399.0}) {
    for (const double y : {0.0, 99.0}) {
      Image image(400, 100, kSheet);
      DrawMarker(image, x, y, label, kText, kInk, {240, 240, 240});
      EXPECT_GE(DrawnArea(image).mWidth, std::min(length, 390));
      EXPECT_GT(DrawnArea(image).mHeight, LineHeight(kText));
    }
  }
}

}  // namespace
}  // namespace Qov::Tools
