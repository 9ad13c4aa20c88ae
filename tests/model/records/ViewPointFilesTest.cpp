#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Qov/Jbf/JbFile.h"
#include "Qov/Ryx/Sequencer.h"
#include "Qov/Ryx/ViewPoint.h"
#include "model/records/RecordBytes.h"
#include "support/SharedModels.h"

namespace Qov::Test {
namespace {

/// All of a "View Points" stream.
struct Views {
  QovRyx::ViewPoint mCurrent;
  std::vector<QovRyx::ViewPointPath> mPaths;
  QovRyx::SequencerData mSequencer;
};

Bytes ReadStream(const std::string& path) {
  QovJbf::JbFile file;
  file.OpenFile(path, "rb");
  file.ReadIndex();
  const auto reader = file.OpenStreamReader("View Points");
  Bytes bytes(reader->GetLength());
  reader->Read(0, bytes.data(), bytes.size());
  return bytes;
}

Views DecodeViews(QovJbf::Block& block) {
  Views views;
  CopyFromBlock(block, views.mCurrent);
  std::uint32_t count = 0;
  CopyFromBlock(block, count);
  for (; count > 0; --count) {
    QovRyx::ViewPointPath& path = views.mPaths.emplace_back();
    CopyFromBlock(block, path.mName);
    CopyFromBlock(block, path.mViewPoints);
  }
  CopyFromBlock(block, views.mSequencer);
  return views;
}

Bytes EncodeViews(const Views& views) {
  QovJbf::Block block;
  CopyToBlock(block, views.mCurrent);
  CopyToBlock(block, static_cast<std::uint32_t>(views.mPaths.size()));
  for (const QovRyx::ViewPointPath& path : views.mPaths) {
    CopyToBlock(block, path.mName);
    CopyToBlock(block, path.mViewPoints);
  }
  CopyToBlock(block, views.mSequencer);
  return Content(block);
}

class ViewPointFilesTest : public testing::TestWithParam<std::string> {};

TEST_P(ViewPointFilesTest, AreWrittenAsTheyWereRead) {
  const std::string path = FindSharedModel(GetParam());
  if (path.empty()) GTEST_SKIP() << "no sample model " << GetParam();
  const Bytes bytes = ReadStream(path);
  QovJbf::Block block = MakeBlock(bytes);
  const Views views = DecodeViews(block);
  EXPECT_EQ(block.GetRemaining(), 0U);
  EXPECT_FALSE(views.mPaths.empty());
  EXPECT_EQ(EncodeViews(views), bytes);
}

INSTANTIATE_TEST_SUITE_P(Samples, ViewPointFilesTest, testing::Values("plate.vpt", "more.vpt"));

}  // namespace
}  // namespace Qov::Test
