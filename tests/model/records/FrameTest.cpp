#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Qov/Ryx/FileVersionScope.h"
#include "Qov/Ryx/ModifierInfo.h"
#include "Qov/Ryx/ViewPoint.h"
#include "model/records/RecordBytes.h"
#include "support/CapturedLog.h"

/// The frame of records, and records as elements of containers.
namespace Qov::Test {
namespace {

TEST(FrameTest, AnOverrunIsLoggedAndNamesThePlace) {
  const Bytes bytes = Encode(QovRyx::ModifierInfo());
  const CapturedLog log;
  try {
    Decode<QovRyx::ModifierInfo>(WithSize(bytes, bytes.size() - 1));
    FAIL();
  } catch (const Util::Exception& error) {
    EXPECT_STREQ(error.GetFile(), "include/Qov/Ryx/BlockVersionedIo");
    EXPECT_EQ(error.GetLine(), 184U);
    EXPECT_STREQ(error.GetLogMessage(), "Unknown Version");
  }
  EXPECT_EQ(log.Text(), "BlockVersionedIo : 184 @ Unknown Version\n");
}

TEST(FrameTest, ARecordMayNotPassItsBlock) {
  const Bytes bytes = Encode(QovRyx::ModifierInfo());
  for (const std::size_t size : {bytes.size() + 1, std::size_t{0xFFFFFFFF}}) {
    EXPECT_EQ(DecodingError<QovRyx::ModifierInfo>(WithSize(bytes, size)), ErrorType::OutOfBounds);
  }
  // The size counts from the record's start, wherever that is.
  QovJbf::Block block = MakeBlock(bytes + WithSize(bytes, bytes.size() + 1));
  QovRyx::ModifierInfo info;
  CopyFromBlock(block, info);
  EXPECT_THROW(CopyFromBlock(block, info), Util::Exception);
}

TEST(FrameTest, ANestedRecordMayNotPassItsOwner) {
  const Bytes legend = FromHex("0b000000 03000000 302e37");
  Bytes bytes = Encode(QovRyx::CAEState());
  const auto found = std::search(bytes.begin(), bytes.end(), legend.begin(), legend.end());
  ASSERT_NE(found, bytes.end());
  *found = 0xF0;
  EXPECT_EQ(DecodingError<QovRyx::CAEState>(bytes + Bytes(1000)), ErrorType::UnknownVersion);
}

TEST(FrameTest, CountsThatLieTakeNoMemory) {
  const Bytes none = LittleEndian(0);
  const Bytes many = LittleEndian(0xFFFFFFFF);
  const Bytes multi = none + FromHex("00 00 00 00") + FromHex("00 00 00 00");
  EXPECT_EQ(DecodingError<QovRyx::MultiCAEState>(MakeRecord("0.1", multi + many)),
            ErrorType::OutOfBounds);
  EXPECT_EQ(DecodingError<QovRyx::HiddenState>(MakeRecord("0.2", none + many)),
            ErrorType::OutOfBounds);
  EXPECT_EQ(DecodingError<QovRyx::HiddenState>(MakeRecord("0.2", many)), ErrorType::OutOfBounds);
  EXPECT_EQ(DecodingError<QovRyx::TransformState>(MakeRecord("0.1", many)), ErrorType::OutOfBounds);
  EXPECT_EQ(DecodingError<QovRyx::CAEXYPlotV1CurveState>(MakeRecord("0.1", none + many)),
            ErrorType::OutOfBounds);
  EXPECT_EQ(DecodingError<QovRyx::ModifierInfo>(LittleEndian(8) + many), ErrorType::OutOfBounds);
}

TEST(FrameTest, VectorsAreReplacedElementByElement) {
  std::vector<QovRyx::ModifierInfo> written(2);
  written[0].mApplication = "first";
  written[1].mComment = "second";
  QovJbf::Block block = MakeBlock(Encode(written));
  std::vector<QovRyx::ModifierInfo> read(3);
  read[0].mUser = "must go";
  CopyFromBlock(block, read);
  EXPECT_EQ(read, written);
}

TEST(FrameTest, MapsHoldRecords) {
  QovRyx::HiddenState state;
  state.mHiddenEntities = {{"part", 0xFE}};
  state.mEntityData["part"].mNames = {"a", ""};
  EXPECT_EQ(Decode<QovRyx::HiddenState>(Encode(state)), state);
}

class LegacyFrameTest : public testing::TestWithParam<std::string> {
 protected:
  const QovRyx::FileVersionScope mScope{GetParam()};
};

TEST_P(LegacyFrameTest, RecordsBeginWithTheirTag) {
  QovJbf::Block block =
      MakeBlock(FromHex("03000000 302e31"
                        "01000000 61"
                        "00000000 00000000 00000000 00000000 00000000"
                        "01000000 63"
                        "7777"));
  QovRyx::ModifierInfo info;
  CopyFromBlock(block, info);
  EXPECT_EQ(info.mApplication, "a");
  EXPECT_EQ(info.mComment, "c");
  EXPECT_EQ(block.GetRemaining(), 2U);
}

TEST_P(LegacyFrameTest, SoDoNestedOnes) {
  const Bytes transform = FromHex(
      "03000000 302e31"
      "01000000 00000000 00000000 00000000"
      "00000000 00000000 00000000"
      "00000000 00000000 0000803f"
      "05000000");
  QovJbf::Block block = MakeBlock(FromHex("03000000 302e31  02000000  01000000 61") + transform +
                                  FromHex("01000000 62") + transform);
  QovRyx::TransformState state;
  CopyFromBlock(block, state);
  EXPECT_EQ(block.GetRemaining(), 0U);
  ASSERT_EQ(state.mTransforms.size(), 2U);
  EXPECT_EQ(state.mTransforms["b"].mMode, 5U);
}

TEST_P(LegacyFrameTest, AViewPointEndsAtItsLegend) {
  const Bytes viewPoint = FromHex("03000000 302e31") + LittleEndian(0) + Bytes(156);
  const Bytes caeStart = FromHex("03000000 302e31") + Bytes(12 + 2 + 8 + 4 + 16 + 4 + 16 + 1);
  const Bytes bytes = viewPoint + FromHex("03000000 302e31") + caeStart + Bytes(100);
  const CapturedLog log;
  EXPECT_EQ(DecodingError<QovRyx::ViewPoint>(bytes), ErrorType::FormatNotSupported);
  EXPECT_NE(log.Text().find("QovRyx::CAELegendState"), std::string::npos) << log.Text();
}

INSTANTIATE_TEST_SUITE_P(Versions, LegacyFrameTest, testing::Values("0.1", "0.1a", "0.1b", "0.2"));

TEST(FrameTest, LaterFileVersionsHaveSizes) {
  const Bytes bytes = Encode(QovRyx::MiscState());
  for (const std::string version : {"0.3", "0.6", "1.0", "0.1c"}) {
    const QovRyx::FileVersionScope scope(version);
    EXPECT_EQ(Decode<QovRyx::MiscState>(bytes), QovRyx::MiscState()) << version;
  }
}

}  // namespace
}  // namespace Qov::Test
