#include "picture/Rasteriser.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace Qov::Tools {
namespace {

constexpr Colour kPaper = {250, 250, 250};
constexpr Colour kRed = {200, 0, 0};
constexpr Colour kGreen = {0, 200, 0};
constexpr int kSize = 100;
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// Squares that face the front view, from 0 to 1 in x and z.
struct Squares {
  std::vector<float> mPoints;
  std::vector<std::uint32_t> mTriangles;
  std::vector<std::uint32_t> mCells;
  std::vector<std::uint8_t> mEdges;

  void Add(float y, float low = 0, float high = 1) {
    const auto first = static_cast<std::uint32_t>(mPoints.size() / 3);
    const auto cell = static_cast<std::uint32_t>(mCells.size() / 2);
    mPoints.insert(mPoints.end(), {low, y, low, high, y, low, high, y, high, low, y, high});
    for (const std::uint32_t i : {0U, 1U, 2U, 0U, 2U, 3U}) mTriangles.push_back(first + i);
    mCells.insert(mCells.end(), {cell, cell});
    mEdges.insert(mEdges.end(), {3, 6});
  }
  ShadedSurface Look(Colour colour = kRed) const {
    ShadedSurface surface;
    surface.mPoints = mPoints;
    surface.mTriangles = mTriangles;
    surface.mTriangleCells = mCells;
    surface.mTriangleEdges = mEdges;
    surface.mColour = colour;
    return surface;
  }
};

/// The unit square fills the image.
Camera MakeCamera() {
  Box box;
  box.Include(Triple{0, -1, 0});
  box.Include(Triple{1, 1, 1});
  Camera camera(StandardView::Front);
  camera.LookAt({0.5, 0, 0.5}, 1, box, {0, 0, kSize, kSize});
  return camera;
}

Image Render(const std::vector<ShadedSurface>& surfaces, const ColourScale* pScale = nullptr,
             int smoothing = 1, const Camera& camera = MakeCamera()) {
  Image image(kSize, kSize, kPaper);
  Rasteriser rasteriser(image, camera, smoothing);
  for (const ShadedSurface& surface : surfaces) rasteriser.Draw(surface, pScale);
  rasteriser.Finish();
  return image;
}

TEST(Rasteriser, HidesWhatIsFartherInAnyOrder) {
  Squares near;
  Squares far;
  near.Add(-0.5F, 0.25F, 0.75F);
  far.Add(0.5F);
  for (const int smoothing : {1, 2}) {
    for (const bool nearFirst : {false, true}) {
      const auto a = nearFirst ? near.Look(kRed) : far.Look(kGreen);
      const auto b = nearFirst ? far.Look(kGreen) : near.Look(kRed);
      const Image image = Render({a, b}, nullptr, smoothing);
      EXPECT_EQ(image.At(50, 50), kRed);  // facing surfaces keep their colour
      EXPECT_EQ(image.At(26, 26), kRed);
      EXPECT_EQ(image.At(23, 50), kGreen);
      EXPECT_EQ(image.At(0, 99), kGreen);
    }
  }
}

TEST(Rasteriser, TellsWhichPlacesAreHidden) {
  Squares square;
  square.Add(0);
  Image image(kSize, kSize, kPaper);
  Rasteriser rasteriser(image, MakeCamera());
  rasteriser.Draw(square.Look());
  EXPECT_TRUE(rasteriser.IsVisible({0.5, -0.5, 0.5}));
  EXPECT_TRUE(rasteriser.IsVisible({0.5, 0, 0.5}));  // on the surface
  EXPECT_FALSE(rasteriser.IsVisible({0.5, 0.5, 0.5}));
  EXPECT_FALSE(rasteriser.IsVisible({2, 0, 0.5}));  // outside of the image
}

TEST(Rasteriser, TrianglesThatShareEdgesLeaveNoGapsAndDoNotOverlap) {
  // A fan around an odd centre; with opacity, a sample that is drawn twice is darker.
  std::vector<float> points = {0.5123F, 0, 0.4771F};
  std::vector<std::uint32_t> triangles;
  constexpr std::uint32_t kCorners = 61;
  for (std::uint32_t i = 0; i < kCorners; ++i) {
    const double angle = 2 * 3.14159265358979 * i / kCorners;
    points.insert(points.end(), {static_cast<float>(0.5 + 2 * std::cos(angle)), 0,
                                 static_cast<float>(0.5 + 2 * std::sin(angle))});
    triangles.insert(triangles.end(), {0, i + 1, (i + 1) % kCorners + 1});
  }
  ShadedSurface surface;
  surface.mPoints = points;
  surface.mTriangles = triangles;
  surface.mColour = kRed;
  for (const float opacity : {1.0F, 0.5F}) {
    surface.mOpacity = opacity;
    const Image image = Render({surface});
    const Colour expected = MixColours(kPaper, kRed, opacity);
    for (const Colour pixel : image.GetPixels()) ASSERT_EQ(pixel, expected);
  }
}

TEST(Rasteriser, ColoursByInterpolatedValuesAndCells) {
  const ColourScale scale(0, 10);
  Squares square;
  square.Add(0);
  ShadedSurface surface = square.Look();
  const std::vector<float> atPoints = {0, 10, 10, 0};  // grows with x
  surface.mValuesAt = ValuesAt::Point;
  surface.mValues = atPoints;
  const Image image = Render({surface}, &scale);
  for (const int x : {3, 31, 50, 87}) {
    const Colour expected = scale.ColourOf(10 * (x + 0.5) / kSize);
    for (const int y : {2, 60, 95}) {
      for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(image.At(x, y)[k], expected[k], 3);
    }
  }
  surface.mValuesAt = ValuesAt::Cell;
  struct Row {
    std::vector<float> mValues;
    Colour mColour;
  };
  for (const Row& row :
       {Row{{7}, scale.ColourOf(7)}, Row{{70}, scale.GetPalette().back()},
        Row{{-HUGE_VALF}, kNoValueColour}, Row{{kNan}, kNoValueColour}, Row{{}, kNoValueColour}}) {
    surface.mValues = row.mValues;
    EXPECT_EQ(Render({surface}, &scale).At(40, 60), row.mColour);
  }
  const std::vector<float> oneMissing = {1, 2, kNan, 4};
  surface.mValuesAt = ValuesAt::Point;
  surface.mValues = oneMissing;
  EXPECT_EQ(Render({surface}, &scale).At(40, 60), kNoValueColour);
}

TEST(Rasteriser, PerspectiveKeepsValuesAtTheirPlaces) {
  // A floor that leads away from the eye: its value is y.
  const std::vector<float> points = {-9, 0, 0, 9, 0, 0, 9, 8, 0, -9, 8, 0};
  const std::vector<float> values = {0, 0, 8, 8};
  const std::vector<std::uint32_t> triangles = {0, 1, 2, 0, 2, 3};
  const ColourScale scale(0, 8);
  ShadedSurface surface;
  surface.mPoints = points;
  surface.mTriangles = triangles;
  surface.mValuesAt = ValuesAt::Point;
  surface.mValues = values;
  Box box;
  box.IncludeAll(points);
  Camera camera(StandardView::Front);
  for (const double eye : {-2.0, 1.0}) {  // the second one is above the floor: it is clipped
    camera.PlaceEye({0, eye, 1}, 1.5, box, {0, 0, kSize, kSize});
    const Image image = Render({surface}, &scale, 1, camera);
    for (const double y : {eye < 0 ? 0.8 : 2.5, 3.0, 4.0}) {
      const auto place = camera.Project({0.1, y, 0});
      ASSERT_TRUE(place);
      const Colour pixel = image.At(static_cast<int>(place->mX), static_cast<int>(place->mY));
      // Shading makes the floor darker by one factor for all channels.
      const Colour expected = scale.ColourOf(y);
      const double factor = double(pixel[1]) / expected[1];
      for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(pixel[k], expected[k] * factor, 12) << y;
    }
  }
}

TEST(Rasteriser, DrawsEdgesOfFacesButNoDiagonals) {
  Squares square;
  square.Add(0, 0.1F, 0.9F);
  ShadedSurface surface = square.Look();
  surface.mEdges = true;
  const Image image = Render({surface});
  EXPECT_LT(image.At(50, 10)[0], 150);  // an edge
  EXPECT_LT(image.At(10, 50)[0], 150);
  EXPECT_EQ(image.At(50, 49), kRed);  // the diagonal
  surface.mTriangleEdges = {};
  EXPECT_LT(Render({surface}).At(50, 49)[0], 150);
}

TEST(Rasteriser, BlendsTransparentSurfacesFromTheFarthest) {
  Squares red;
  Squares green;
  red.Add(-0.5F);
  green.Add(0.5F);
  ShadedSurface a = red.Look(kRed);
  ShadedSurface b = green.Look(kGreen);
  a.mOpacity = b.mOpacity = 0.5F;
  const Colour expected = MixColours(MixColours(kPaper, kGreen, 0.5F), kRed, 0.5F);
  EXPECT_EQ(Render({a, b}).At(30, 30), expected);
  EXPECT_EQ(Render({b, a}).At(30, 30), expected);
  b.mOpacity = 1;
  EXPECT_EQ(Render({a, b}).At(30, 30), MixColours(kGreen, kRed, 0.5F));
}

TEST(Rasteriser, DrawsLinesAndPointsWithTheirWidth) {
  const std::vector<float> points = {0.1F, 0, 0.5F, 0.9F, 0, 0.5F};
  const std::vector<std::uint32_t> lines = {0, 1};
  Squares square;  // the line is part of it
  square.Add(0);
  ShadedSurface surface;
  surface.mPoints = points;
  surface.mColour = kGreen;
  const auto count = [&](double x) {
    int n = 0;
    const Image image = Render({square.Look(), surface});
    for (int y = 0; y < kSize; ++y) n += image.At(static_cast<int>(x * kSize), y) == kGreen;
    return n;
  };
  surface.mLines = lines;
  surface.mLineWidth = 6;
  EXPECT_EQ(count(0.5), 6);
  EXPECT_EQ(count(0.02), 0);
  surface.mLines = {};
  surface.mDrawPoints = true;
  surface.mPointSize = 10;
  EXPECT_EQ(count(0.1), 10);
  EXPECT_EQ(count(0.5), 0);
}

TEST(Rasteriser, DrawsWhatIsLeftOfHostileSurfaces) {
  Squares square;
  square.Add(0);
  ShadedSurface whole = square.Look();
  const std::vector<float> points = {0, kNan, 0, 1, 0, 0, 1, 0, HUGE_VALF, 3e38F, -3e38F, 3e38F};
  const std::vector<std::uint32_t> triangles = {0, 1, 2, 1, 1, 1, 7, 1, 0, 1, 3, 1, 1};
  const std::vector<std::uint32_t> lines = {0, 1, 1, 1, 9, 9, 3, 3, 2};
  ShadedSurface hostile;
  hostile.mPoints = points;
  hostile.mTriangles = triangles;
  hostile.mLines = lines;
  hostile.mDrawPoints = hostile.mSmooth = hostile.mEdges = true;
  hostile.mOpacity = 0.5F;
  EXPECT_EQ(Render({hostile, whole}, nullptr, 2).At(50, 50), kRed);
}

TEST(Rasteriser, ShadesSmoothlyButNotAcrossSharpEdges) {
  // Two faces of a roof that meet at x = 0.5, with a small and a great angle.
  for (const bool isSharp : {false, true}) {
    const float depth = isSharp ? 0.8F : 0.1F;
    const std::vector<float> points = {0, depth, 0, 0.5F, 0, 0, 1, depth, 0,
                                       0, depth, 1, 0.5F, 0, 1, 1, depth, 1};
    const std::vector<std::uint32_t> triangles = {0, 1, 4, 0, 4, 3, 1, 2, 5, 1, 5, 4};
    ShadedSurface surface;
    surface.mPoints = points;
    surface.mTriangles = triangles;
    surface.mColour = kRed;
    surface.mSmooth = true;
    const Image image = Render({surface});
    const int step = std::abs(image.At(49, 50)[0] - image.At(50, 50)[0]);
    EXPECT_EQ(step > 15, isSharp) << step;
  }
}

}  // namespace
}  // namespace Qov::Tools
