#include "picture/Camera.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace Qov::Tools {
namespace {

constexpr Rectangle kViewport = {100, 50, 400, 200};

/// Returns the box from -1 to 1 in x, -2 to 2 in y and -3 to 3 in z, times `scale`.
Box MakeBox(double scale = 1) {
  Box box;
  box.Include(Triple{-scale, -2 * scale, -3 * scale});
  box.Include(Triple{scale, 2 * scale, 3 * scale});
  return box;
}

TEST(Camera, StandardViewsShowTheExpectedFace) {
  struct Row {
    const char* mName;
    Triple mNearest;  ///< The middle of the face that is seen.
    Triple mRight;    ///< Directions in the image.
    Triple mUp;
  };
  const Row rows[] = {
      {"front", {0, -2, 0}, {1, 0, 0}, {0, 0, 1}}, {"back", {0, 2, 0}, {-1, 0, 0}, {0, 0, 1}},
      {"left", {-1, 0, 0}, {0, -1, 0}, {0, 0, 1}}, {"right", {1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
      {"top", {0, 0, 3}, {1, 0, 0}, {0, 1, 0}},    {"bottom", {0, 0, -3}, {1, 0, 0}, {0, -1, 0}},
  };
  for (const Row& row : rows) {
    const auto view = FindStandardView(row.mName);
    ASSERT_TRUE(view) << row.mName;
    Camera camera(*view);
    camera.Fit(MakeBox(), kViewport);
    const auto centre = camera.Project({0, 0, 0});
    const auto right = camera.Project(row.mRight);
    const auto up = camera.Project(row.mUp);
    EXPECT_DOUBLE_EQ(centre->mX, 300) << row.mName;
    EXPECT_DOUBLE_EQ(centre->mY, 150) << row.mName;
    EXPECT_GT(right->mX, centre->mX + 1) << row.mName;
    EXPECT_NEAR(right->mY, centre->mY, 1e-9) << row.mName;
    EXPECT_LT(up->mY, centre->mY - 1) << row.mName;
    EXPECT_NEAR(up->mX, centre->mX, 1e-9) << row.mName;
    EXPECT_GT(camera.Project(row.mNearest)->mDepth, centre->mDepth) << row.mName;
  }
  EXPECT_FALSE(FindStandardView("Front"));
  Camera iso(*FindStandardView("iso"));
  iso.Fit(MakeBox(), kViewport);
  EXPECT_GT(iso.Project({1, -2, 3})->mDepth, iso.Project({1, -2, -3})->mDepth);
  EXPECT_GT(iso.Project({1, -2, 0})->mDepth, iso.Project({-1, 2, 0})->mDepth);
}

/// Expects all corners of the box to be inside of the viewport, and to fill most of it.
void ExpectFit(const Camera& camera, const Box& box) {
  double left = 1e9;
  double right = -1e9;
  double top = 1e9;
  double bottom = -1e9;
  for (int i = 0; i < 8; ++i) {
    Triple corner;
    for (std::size_t k = 0; k < 3; ++k)
      corner[k] = (i >> k & 1) ? box.GetHigh()[k] : box.GetLow()[k];
    const auto screen = camera.Project(corner);
    ASSERT_TRUE(screen);
    left = std::min(left, screen->mX);
    right = std::max(right, screen->mX);
    top = std::min(top, screen->mY);
    bottom = std::max(bottom, screen->mY);
    EXPECT_GT(screen->mDepth, 0);
    EXPECT_LE(screen->mDepth, 1);
  }
  EXPECT_GE(left, 100);
  EXPECT_LE(right, 500);
  EXPECT_GE(top, 50);
  EXPECT_LE(bottom, 250);
  EXPECT_TRUE(right - left > 0.9 * 400 || bottom - top > 0.9 * 200);
}

TEST(Camera, FitsBoxesOfAnySize) {
  for (const double scale : {1.0, 1e-40, 1e30, 1e38}) {
    for (const char* name : {"front", "left", "top", "iso"}) {
      SCOPED_TRACE(std::string(name) + " " + std::to_string(scale));
      Camera camera(*FindStandardView(name));
      camera.Fit(MakeBox(scale), kViewport);
      ExpectFit(camera, MakeBox(scale));
    }
  }
}

TEST(Camera, PutsOnePointAndNothingInTheMiddle) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  Box point;
  point.IncludeAll(std::vector<float>{1e30F, -5, 7, nan, 0, 0, 0, 0, HUGE_VALF});
  EXPECT_EQ(point.GetRadius(), 0);
  for (const Box& box : {point, Box()}) {
    Camera camera(StandardView::Iso);
    camera.Fit(box, kViewport);
    const auto screen = camera.Project(box.GetCentre());
    EXPECT_DOUBLE_EQ(screen->mX, 300);
    EXPECT_DOUBLE_EQ(screen->mY, 150);
  }
}

TEST(Camera, PerspectiveMakesNearThingsLarger) {
  Camera camera = Camera::FromDirections({0, 5, 0}, {0, 0.5, 3});
  camera.PlaceEye({0, -10, 0}, std::acos(-1) / 2, MakeBox(), kViewport);
  // With an angle of 90 degrees, half of the height is seen as large as the distance.
  EXPECT_NEAR(camera.Project({0, 0, 5})->mY, 150 - 100 * 5 / 10.0, 1e-9);
  EXPECT_NEAR(camera.Project({0, -3, 3.5})->mY, 150 - 100 * 3.5 / 7, 1e-9);
  EXPECT_GT(camera.Project({0, -2, 0})->mDepth, camera.Project({0, 2, 0})->mDepth);
  EXPECT_FALSE(camera.Project({0, -11, 0}));
}

TEST(Camera, ReplacesUselessDirections) {
  for (const Triple& up : {Triple{0, 2, 0}, Triple{0, 0, 0}, Triple{0, HUGE_VAL, 1}}) {
    EXPECT_EQ(Camera::FromDirections({0, 1, 0}, up).GetUp(), Camera(StandardView::Front).GetUp());
  }
}

}  // namespace
}  // namespace Qov::Tools
