#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Qov/Ryx/ModifierInfo.h"
#include "Qov/Ryx/ViewPoint.h"
#include "records/FileVersionScope.h"
#include "records/RecordBytes.h"
#include "support/CapturedLog.h"

/// The frame of records, and records as elements of containers.
namespace Qov::Test {
namespace {

TEST(FrameTest, OverrunsAreLoggedWithTheirPlace) {
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

TEST(FrameTest, NestedRecordsEndInsideTheirOwner) {
  Bytes bytes = Encode(QovRyx::CAEState());
  const std::size_t legend = bytes.find(FromHex("0b000000 03000000 302e37"));
  ASSERT_NE(legend, Bytes::npos);
  bytes[legend] = '\xF0';
  EXPECT_EQ(DecodingError<QovRyx::CAEState>(bytes + Bytes(1000, '\0')), ErrorType::UnknownVersion);
}

TEST(FrameTest, VectorsAreReplacedElementByElement) {
  std::vector<QovRyx::ModifierInfo> written(2);
  written[0].mApplication = "first";
  written[1].mComment = "second";
  QovJbf::Block block = BlockOf(Encode(written));
  std::vector<QovRyx::ModifierInfo> read(3);
  read[0].mUser = "must go";
  CopyFromBlock(block, read);
  EXPECT_EQ(read, written);
}

TEST(FrameTest, EditedRecordsKeepTheirTailAndTagIfPossible) {
  struct Case {
    std::string mTag;
    Bytes mTail;
    void (*mEdit)(QovRyx::ViewState&);
    std::string mWrittenTag;
  };
  const auto withinTag = [](QovRyx::ViewState& state) { state.mMiscState.mFlag1 = 7; };
  const auto beyondTag = [](QovRyx::ViewState& state) { state.mSectionState.mFlag = 7; };
  const auto forget = [](QovRyx::ViewState& state) { state.ForgetOrigin(); };
  for (const Case& c : {Case{"0.1", "", withinTag, "0.1"}, Case{"0.1", "", beyondTag, "0.5"},
                        Case{"0.3", "tail", beyondTag, "0.3"},
                        Case{"0.9", "tail", beyondTag, "0.9"}, Case{"0.1", "", forget, "0.5"}}) {
    auto state = Decode<QovRyx::ViewState>(
        MakeRecord(c.mTag, EncodeAs(QovRyx::ViewState(), c.mTag).substr(11) + c.mTail));
    EXPECT_TRUE(state.HasOrigin());
    EXPECT_FALSE(state == QovRyx::ViewState());
    c.mEdit(state);
    QovRyx::ViewState edited;
    c.mEdit(edited);
    EXPECT_EQ(Encode(state),
              MakeRecord(c.mWrittenTag, EncodeAs(edited, c.mWrittenTag).substr(11) + c.mTail))
        << c.mTag;
  }
}

TEST(FrameTest, ReadingReplacesTagAndTail) {
  QovRyx::ModifierInfo info;
  info.SetOrigin("0.9", "tail");
  QovJbf::Block block = BlockOf(Encode(QovRyx::ModifierInfo()));
  CopyFromBlock(block, info);
  EXPECT_EQ(info, QovRyx::ModifierInfo());
}

/// In the oldest files, records and nested records begin with their tag.
TEST(LegacyFrameTest, HasNoSizes) {
  const Bytes transform = FromHex(
      "03000000 302e31"
      "01000000 00000000 00000000 00000000"
      "00000000 00000000 00000000"
      "00000000 00000000 0000803f"
      "05000000");
  const Bytes transforms = FromHex("03000000 302e31  02000000  01000000 61") + transform +
                           FromHex("01000000 62") + transform;
  const Bytes viewPoint = FromHex("03000000 302e31") + Bytes(4 + 156, '\0');
  const Bytes caeStart = FromHex("03000000 302e31") + Bytes(12 + 2 + 8 + 4 + 16 + 4 + 16 + 1, '\0');
  for (const std::string version : {"0.1", "0.1a", "0.1b", "0.2"}) {
    const QovRyx::FileVersionScope scope(version);
    QovJbf::Block block = BlockOf(transforms + "??");
    QovRyx::TransformState state;
    CopyFromBlock(block, state);
    EXPECT_EQ(block.GetRemaining(), 2U);
    ASSERT_EQ(state.mTransforms.size(), 2U);
    EXPECT_EQ(state.mTransforms["b"].mMode, 5U);

    // Reading a view point stops at its legend, because the length of that record is unknown.
    const CapturedLog log;
    EXPECT_EQ(DecodingError<QovRyx::ViewPoint>(viewPoint + FromHex("03000000 302e31") + caeStart +
                                               Bytes(100, '\0')),
              ErrorType::FormatNotSupported);
    EXPECT_NE(log.Text().find("QovRyx::CAELegendState"), std::string::npos) << log.Text();
  }
  for (const std::string version : {"0.3", "0.6", "1.0", "0.1c"}) {
    const QovRyx::FileVersionScope scope(version);
    EXPECT_EQ(Decode<QovRyx::MiscState>(Encode(QovRyx::MiscState())), QovRyx::MiscState());
  }
}

}  // namespace
}  // namespace Qov::Test
