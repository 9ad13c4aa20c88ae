#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "Faults.h"
#include "html/PageTables.h"
#include "html/PageWriter.h"
#include "support/CapturedErrors.h"
#include "support/Files.h"
#include "support/ModelBuilder.h"
#include "support/TempDir.h"

/// Makes every call fail once that opens, writes or renames a file while a page is made, and then
/// together with all later calls.
namespace Qov::Test {
namespace {

using Faults::Call;

void SaveTriangle(const std::string& path) {
  using QovRyx::NumericArray;
  QovRyx::Tree tree(false);
  auto& mesh = AddNode<QovRyx::Geometry>(tree, QovRyx::NodeTree::kRootId, "Triangle");
  mesh.AppendVariable(MakeVariable("Coordinates", 0, NumericArray::Of(Ramp(9, 0), 3)));
  mesh.AppendVariable(MakeVariable("Connectivity", 4, NumericArray::Of(Count(3, 0))));
  mesh.AppendVariable(MakeVariable("Polylength", 5, NumericArray::Of(Count(1, 3))));
  mesh.AppendVariable(MakeVariable("Stress", 12, NumericArray::Of(Ramp(3, 0))));
  SaveTree(tree, path);
}

void WriteHtml(const std::string& model, const std::string& path) {
  QovRyx::Tree tree(false);
  LoadTree(tree, model);
  const Tools::ExportContent content = Tools::ChooseContent(tree, {}, Tools::StepLayout::Meshes);
  Tools::PageRequest request;
  request.mTitle = "faults";
  request.mLimit = 1'000'000;
  Tools::PageReport report;
  Tools::OutputSet outputs(true);
  Tools::WritePage(tree, content, Tools::MakeTables(tree, {}, report.mNotes), {}, request, nullptr,
                   outputs.Open(path), report);
  outputs.CommitAll();
}

class PageFaults : public testing::TestWithParam<Call> {};

TEST_P(PageFaults, AreReportedAndLeaveNothing) {
  const TempDir dir;
  SaveTriangle(dir / "a.ryx");
  WriteHtml(dir / "a.ryx", dir / "sound.html");
  const std::string sound = ReadFile(dir / "sound.html");
  for (const bool andLater : {false, true}) {
    std::size_t n = 0;
    for (bool hasFailed = true; hasFailed && !HasFailure();) {
      bool isWritten = true;
      {
        const CapturedErrors captured;
        Faults::Arm(GetParam(), ++n, andLater);
        try {
          WriteHtml(dir / "a.ryx", dir / "page.html");
        } catch (const std::exception&) {
          isWritten = false;
        }
        hasFailed = Faults::Disarm();
      }
      // The page may be there after an error if its folder could not be flushed.
      const bool exists = std::filesystem::exists(dir / "page.html");
      EXPECT_TRUE(exists || !isWritten) << n;
      if (exists) {
        EXPECT_EQ(ReadFile(dir / "page.html"), sound) << n;
      }
      std::filesystem::remove(dir / "page.html");
      EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.GetPath()),
                              std::filesystem::directory_iterator()),
                2)
          << n;
    }
    EXPECT_GT(n, 1U);  // otherwise no call was intercepted
  }
}

INSTANTIATE_TEST_SUITE_P(Files, PageFaults,
                         testing::Values(Call::Open, Call::Close, Call::Read, Call::Write,
                                         Call::Seek, Call::Sync, Call::Rename));

}  // namespace
}  // namespace Qov::Test
