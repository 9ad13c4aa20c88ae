#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <string>

#include "Faults.h"
#include "SafeOutput.h"
#include "picture/DrawPicture.h"
#include "picture/PngFile.h"
#include "support/Files.h"
#include "support/ModelBuilder.h"
#include "support/TempDir.h"

/// Makes calls of `ryx picture --overwrite` fail.
namespace Qov::Test {
namespace {

using Faults::Call;

constexpr const char* kPictureBefore = "a picture of before";

/// Returns false after an error.
bool Draw(const std::string& model, const std::string& path) {
  try {
    QovRyx::Tree tree(false);
    QovRyx::Tree::IdMap ids;
    tree.Load(model, ids, QovRyx::Tree::ReadMode::WithoutViews,
              QovRyx::Tree::SupportedFileFormats::Ryx);
    Tools::PictureRequest request;
    request.mWidth = 64;
    request.mHeight = 64;
    request.mResults = {"Stress"};
    Tools::PictureReport report;
    const Tools::Image image = Tools::DrawPicture({tree, "model"}, request, report);
    Tools::SafeOutput output(path, true);
    output.Write(Tools::EncodePng(image));
    output.Commit();
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

class PictureFaults : public testing::TestWithParam<Call> {};

TEST_P(PictureFaults, LeaveTheOldPictureOrMakeTheWholeNewOne) {
  const TempDir dir;
  const std::string model = dir / "a.ryx";
  const std::string path = dir / "a.png";
  {
    QovRyx::Tree tree(false);
    auto& points = AddNode<QovRyx::Geometry>(tree, QovRyx::NodeTree::kRootId, "Points");
    points.AppendVariable(MakeVariable("Coordinates", 0, QovRyx::NumericArray::Of(Ramp(30, 0), 3)));
    points.AppendVariable(MakeVariable("Stress", 12, QovRyx::NumericArray::Of(Ramp(10, 0))));
    SaveTree(tree, model);
  }
  ASSERT_TRUE(Draw(model, path));
  const std::string sound = ReadFile(path);
  bool hasFailed = true;
  std::size_t n = 1;
  for (; hasFailed; n += 1 + n / 8) {  // thousands of calls ask for memory
    WriteFile(path, kPictureBefore);
    Faults::Arm(GetParam(), n, false);
    const bool isDrawn = Draw(model, path);
    hasFailed = Faults::Disarm();
    const std::string content = ReadFile(path);
    // The last calls are made when the new picture has its name.
    ASSERT_TRUE(content == sound || (!isDrawn && content == kPictureBefore)) << "call " << n;
    ASSERT_EQ(std::distance(std::filesystem::directory_iterator(dir.GetPath()),
                            std::filesystem::directory_iterator()),
              2)
        << "call " << n;
  }
  EXPECT_GT(n, 2U);  // otherwise no call was intercepted
}

INSTANTIATE_TEST_SUITE_P(Calls, PictureFaults,
                         testing::Values(Call::Open, Call::Close, Call::Read, Call::Write,
                                         Call::Memory, Call::Sync, Call::Rename));

}  // namespace
}  // namespace Qov::Test
