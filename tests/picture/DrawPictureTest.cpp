#include "picture/DrawPicture.h"

#include <gmock/gmock.h>

#include <png.h>

#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>

#include "Qov/Util/Exception.h"
#include "picture/ColourScale.h"
#include "picture/PngFile.h"
#include "picture/TerminalPicture.h"
#include "support/Files.h"
#include "support/ModelBuilder.h"

namespace Qov::Test {
namespace {

using namespace Tools;
using namespace QovRyx;
using testing::HasSubstr;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// Adds a cube with the corners 0 and `size`, moved along x.
Geometry& AddCube(Tree& tree, const std::string& name, float x, float size = 1) {
  auto& cube = AddNode<Geometry>(tree, NodeTree::kRootId, name);
  std::vector<float> points;
  for (const float z : {0.0F, size}) {
    points.insert(points.end(), {x, 0, z, x + size, 0, z, x + size, size, z, x, size, z});
  }
  cube.AppendVariable(MakeVariable("Coordinates", 0, NumericArray::Of(points, 3)));
  cube.AppendVariable(MakeVariable("Connectivity", 4, NumericArray::Of(Count(8, 0))));
  cube.AppendVariable(MakeVariable("Polylength", 5, NumericArray::Of(std::vector{8U})));
  cube.AppendVariable(MakeVariable("Node Ids", 6, NumericArray::Of(Count(8, 101))));
  return cube;
}

void AddHeat(Geometry& cube, const std::string& name, const std::vector<float>& values) {
  auto heat = MakeVariable(name, 12, NumericArray::Of(values));
  heat.mAttributes["unit"] = std::string("K");
  cube.AppendVariable(std::move(heat));
}

const std::vector<float> kHeat = {0, 0, 0, 0, 10, 10, 10, 10};

class Pictures : public testing::Test {
 protected:
  Pictures() {
    mRequest.mWidth = 200;
    mRequest.mHeight = 160;
    mRequest.mView = "front";
  }
  Image Draw(const Tree& tree) {
    mReport = {};
    return DrawPicture({tree, "model"}, mRequest, mReport);
  }
  /// Returns the message of the error that drawing raises; empty if it draws.
  std::string ErrorOf(const std::function<void()>& draw) {
    try {
      draw();
      return {};
    } catch (const Util::Exception& error) {
      return error.GetLogMessage();
    }
  }
  /// Returns the share of pixels whose channels differ by at most `tolerance` from the colour.
  static double ShareOf(const Image& image, const Colour& colour, int tolerance = 12) {
    double count = 0;
    for (const Colour& pixel : image.GetPixels()) {
      bool isNear = true;
      for (std::size_t k = 0; k < 3; ++k) isNear &= std::abs(pixel[k] - colour[k]) <= tolerance;
      count += isNear ? 1 : 0;
    }
    return count / static_cast<double>(image.GetPixels().size());
  }

  PictureRequest mRequest;
  PictureReport mReport;
};

TEST_F(Pictures, ShowPartsInTheirColoursUnlessTheViewHidesThem) {
  Tree tree(false);
  AddCube(tree, "Left", 0);
  AddCube(tree, "Right", 2);
  tree.SetHasViewPoints(true);
  ViewPoint& view = tree.GetViewPoint();
  view.mName = "Half";
  view.mPoint1 = {1.5F, -6, 0.5F};
  view.mPoint3 = {1.5F, 0, 0.5F};
  view.mViewState.mHiddenState.mHiddenEntities = {{"Right", 1}, {"Nobody", 1}, {"Left", 0}};
  const Image both = Draw(tree);
  EXPECT_GT(ShareOf(both, PartColour(0)), 0.02);
  EXPECT_GT(ShareOf(both, PartColour(1)), 0.02);
  EXPECT_EQ(mReport.mPanels[0].mParts[1].mDrawn.mNumTriangles, 12U);
  for (const char* word : {"Half", "0"}) {
    mRequest.mView = word;
    const Image half = Draw(tree);
    EXPECT_GT(ShareOf(half, PartColour(0)), 0.02);
    EXPECT_EQ(ShareOf(half, PartColour(1)), 0);
    EXPECT_TRUE(mReport.mPanels[0].mParts[1].mIsHidden);
    EXPECT_THAT(mReport.mNotes, testing::Contains(HasSubstr("hides 1 name that no")));
  }
  mRequest.mView = "Hal";
  EXPECT_THAT(ErrorOf([&] { Draw(tree); }), HasSubstr("did you mean \"Half\""));
}

TEST_F(Pictures, OfANodeByItsIdLackPartsWithThatName) {
  Tree tree(false);
  AddCube(tree, "Cube", 0);
  const std::uint32_t id = tree.GetNodes().GetCurrentId();
  AddCube(tree, std::to_string(id), 2);
  mRequest.mNodeIds = {id};
  Draw(tree);
  ASSERT_EQ(mReport.mPanels[0].mParts.size(), 1U);
  EXPECT_EQ(mReport.mPanels[0].mParts[0].mName, "Cube");
}

TEST_F(Pictures, ColourValuesByOneRangeAndMissingOnesGrey) {
  Tree tree(false);
  AddHeat(AddCube(tree, "Warm", 0), "Heat", kHeat);
  AddHeat(AddCube(tree, "Half", 2), "Heat", {kNan, kNan, kNan, kNan, 20, 20, 20, 20});
  mRequest.mResults = {"Heat"};
  mRequest.mView = "top";
  const Image image = Draw(tree);
  const ColourScale scale(0, 20);
  EXPECT_GT(ShareOf(image, scale.ColourOf(10)), 0.03);
  EXPECT_GT(ShareOf(image, scale.ColourOf(20)), 0.03);
  EXPECT_EQ(mReport.mPanels[0].mRange, std::pair(0.0, 20.0));
  EXPECT_EQ(mReport.mPanels[0].mUnit, "K");
  mRequest.mView = "bottom";
  EXPECT_GT(ShareOf(Draw(tree), kNoValueColour), 0.03);
  mRequest.mRange = {0, 1};
  mRequest.mView = "top";
  EXPECT_GT(ShareOf(Draw(tree), scale.ColourOf(20)), 0.06);
  mRequest.mResults = {"Heta"};
  EXPECT_THAT(ErrorOf([&] { Draw(tree); }), HasSubstr("did you mean Heat?"));
}

TEST_F(Pictures, DeformVisiblyOrByTheGivenScale) {
  Tree tree(false);
  std::vector<float> shifts(24);
  for (std::size_t i = 12; i < 24; i += 3) shifts[i] = 0.003F;
  AddCube(tree, "Cube", 0).AppendVariable(MakeVariable("Shift", 13, NumericArray::Of(shifts, 3)));
  mRequest.mDeform = "Shift";
  Draw(tree);
  EXPECT_DOUBLE_EQ(mReport.mPanels[0].mScale, 50);  // about 0.17 of 1.7
  mRequest.mScale = 2;
  Draw(tree);
  EXPECT_DOUBLE_EQ(mReport.mPanels[0].mScale, 2);
}

TEST_F(Pictures, OfSheetsShareRangesByUnit) {
  Tree tree(false);
  Geometry& cube = AddCube(tree, "Cube", 0);
  AddHeat(cube, "Heat|A", kHeat);
  AddHeat(cube, "Heat|B", std::vector<float>(8, 30.0F));
  cube.AppendVariable(MakeVariable("Mass|B", 14, NumericArray::Of(Ramp(8, 1))));
  mRequest.mResults = {"Heat", "Mass"};
  const std::vector<NamedModel> models = {{tree, "model"}};
  DrawSheet(models, mRequest, mReport);
  ASSERT_EQ(mReport.mPanels.size(), 3U);
  EXPECT_EQ(mReport.mPanels[0].mRange, std::pair(0.0, 30.0));
  EXPECT_EQ(mReport.mPanels[1].mRange, std::pair(0.0, 30.0));
  EXPECT_EQ(mReport.mPanels[2].mRange, std::pair(1.0, 4.5));
  EXPECT_EQ(mReport.mPanels[2].mStep, "B");
}

TEST_F(Pictures, OfDifferencesMarkTheLargest) {
  Tree first(false);
  Tree second(false);
  Tree other(false);
  Tree turned(false);
  AddHeat(AddCube(first, "Cube", 0), "Heat", kHeat);
  AddHeat(AddCube(second, "Cube", 0), "Heat", {0, 0, 0, 0, 10, 10, 3, 12});
  AddHeat(AddCube(other, "Ball", 0), "Heat", kHeat);
  Geometry& cube = AddCube(turned, "Cube", 0);
  cube.EditVariable(1).mValues =
      NumericArray::Of(std::vector<std::uint32_t>{4, 5, 6, 7, 0, 1, 2, 3});
  AddHeat(cube, "Heat", kHeat);
  mRequest.mResults = {"Heat"};
  const auto draw = [&](const Tree& a, const Tree& b) {
    mReport = {};
    return DrawDifference({a, "a"}, {b, "b"}, mRequest, mReport);
  };
  draw(first, second);
  const ReportedPanel& panel = mReport.mPanels[0];
  ASSERT_TRUE(panel.mLargest);
  EXPECT_EQ(panel.mLargest->mId, 107U);
  EXPECT_FLOAT_EQ(static_cast<float>(panel.mLargest->mValue), -7);
  EXPECT_EQ(panel.mRange, std::pair(-7.0, 7.0));
  EXPECT_THAT(ErrorOf([&] { draw(first, other); }), HasSubstr("has no geometry Cube"));
  EXPECT_THAT(ErrorOf([&] { draw(first, turned); }), HasSubstr("cells of geometry Cube differ"));
}

/// Returns the share of pixels that differ visibly from those of a golden picture. Writes the
/// picture if RYX_UPDATE_GOLDEN is set.
double CompareWithGolden(const Image& image, const std::string& name) {
  const std::string path = PICTURE_GOLDEN_DIR "/" + name;
  if (std::getenv("RYX_UPDATE_GOLDEN") != nullptr) WriteFile(path, EncodePng(image));
  png_image golden{};
  golden.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&golden, path.c_str()) == 0) return 1;
  golden.format = PNG_FORMAT_RGB;
  std::vector<Colour> pixels(std::size_t{golden.width} * golden.height);
  png_image_finish_read(&golden, nullptr, pixels.data(), 0, nullptr);
  if (pixels.size() != image.GetPixels().size()) return 1;
  double count = 0;
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    int largest = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      largest = std::max(largest, std::abs(pixels[i][k] - image.GetPixels()[i][k]));
    }
    count += largest > 24 ? 1 : 0;
  }
  return count / static_cast<double>(pixels.size());
}

TEST_F(Pictures, LookLikeTheGoldenOnes) {
  Tree tree(false);
  Geometry& cube = AddCube(tree, "Cube", 0);
  AddHeat(cube, "Heat", {0, 2, 4, 6, 10, 12, 14, 16});
  cube.AppendVariable(MakeVariable("Shift", 13, NumericArray::Of(Ramp(24, -3), 3)));
  AddCube(tree, "Box", 1.5F, 0.5F);
  mRequest.mView = "iso";
  EXPECT_LT(CompareWithGolden(Draw(tree), "parts.png"), 0.01);
  mRequest.mEdges = true;
  mRequest.mResults = {"Heat"};
  mRequest.mDeform = "Shift";
  EXPECT_LT(CompareWithGolden(Draw(tree), "heat.png"), 0.01);
}

TEST_F(Pictures, OfBadModelsAreDrawnOrRefused) {
  struct Case {
    const char* mName;
    std::function<void(Tree&)> mBuild;
    const char* mError;
  };
  const auto points = [](const std::vector<float>& coordinates) {
    return [coordinates](Tree& tree) {
      AddNode<Geometry>(tree, NodeTree::kRootId, "Points")
          .AppendVariable(MakeVariable("Coordinates", 0, NumericArray::Of(coordinates, 3)));
    };
  };
  const std::vector<Case> cases = {
      {"empty", [](Tree&) {}, "no geometry that can be drawn"},
      {"no points", points({}), ""},
      {"one point", points({1, 2, 3}), ""},
      {"NaN coordinates", points({kNan, kNan, kNan, 1, kNan, 2}), ""},
      {"huge", [](Tree& tree) { AddCube(tree, "Cube", -1e30F, 3e38F); }, ""},
      {"no size", [](Tree& tree) { AddCube(tree, "Cube", 5, 0); }, ""},
  };
  for (const Case& one : cases) {
    Tree tree(false);
    one.mBuild(tree);
    for (const char* view : {"iso", "front"}) {
      mRequest.mView = view;
      EXPECT_THAT(ErrorOf([&] { Draw(tree); }), HasSubstr(one.mError)) << one.mName;
    }
  }
  for (const float value : {kNan, 5.0F, std::numeric_limits<float>::infinity()}) {
    Tree tree(false);
    AddHeat(AddCube(tree, "Cube", 0), "Heat", std::vector<float>(8, value));
    mRequest.mResults = {"Heat"};
    Draw(tree);
    EXPECT_EQ(mReport.mPanels[0].mRange.has_value(), value == 5.0F);
  }
}

TEST(TerminalGraphics, AreReadFromTheAnswerOfTheTerminal) {
  EXPECT_EQ(ParseGraphicsAnswer("\033_Gi=31;OK\033\\\033[?62c"), TerminalGraphics::Kitty);
  EXPECT_EQ(ParseGraphicsAnswer("\033[?62;4;22c"), TerminalGraphics::Sixel);
  EXPECT_EQ(ParseGraphicsAnswer("\033[?4c"), TerminalGraphics::Sixel);
  for (const char* none : {"", "\033[?64;14;44c", "\033_Gi=31;EINVAL\033\\\033[?1c", "4c"}) {
    EXPECT_EQ(ParseGraphicsAnswer(none), TerminalGraphics::None) << none;
  }
  Image image(2, 7, {255, 255, 255});
  image.At(0, 0) = {255, 0, 0};
  EXPECT_EQ(EncodeForTerminal(image, TerminalGraphics::Sixel),
            "\033Pq\"1;1;2;7#0;2;100;100;100#1;2;100;0;0#0}~$#1@?$-#0@@$-\033\\\n");
}

}  // namespace
}  // namespace Qov::Test
