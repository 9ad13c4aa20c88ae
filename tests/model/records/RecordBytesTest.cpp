#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Qov/Ryx/MaterialValues.h"
#include "Qov/Ryx/ModifierInfo.h"
#include "Qov/Ryx/ViewPoint.h"
#include "model/records/RecordBytes.h"

/// Golden bytes of records, one field a line.
namespace Qov::Test {
namespace {

/// A tag, and what its rung adds to the body.
using RungBytes = std::vector<std::pair<std::string, std::string>>;

/// Checks the record at every rung, writing and reading.
template <class T>
void ExpectRungs(const T& record, const RungBytes& rungs) {
  Bytes body;
  for (const auto& [tag, added] : rungs) {
    SCOPED_TRACE(tag);
    body += FromHex(added);
    EXPECT_EQ(EncodeAs(record, tag), MakeRecord(tag, body));
    EXPECT_EQ(EncodeAs(Decode<T>(MakeRecord(tag, body)), tag), MakeRecord(tag, body));
  }
  EXPECT_EQ(Encode(record), MakeRecord(rungs.back().first, body));
}

TEST(RecordBytesTest, ModifierInfo) {
  QovRyx::ModifierInfo info;
  info.mRecordMachine = true;
  info.mApplication = "RyxMerge";
  info.mApplicationVersion = "1";
  info.mFileVersion = "1.3";
  info.mDate = "d";
  info.mHost = "h";
  info.mComment = "c";
  EXPECT_EQ(Encode(info), FromHex("36 00 00 00"
                                  "03 00 00 00  30 2e 31"
                                  "08 00 00 00  52 79 78 4d 65 72 67 65"
                                  "01 00 00 00  31"
                                  "03 00 00 00  31 2e 33"
                                  "01 00 00 00  64"
                                  "01 00 00 00  68"
                                  "00 00 00 00"
                                  "01 00 00 00  63"));
}

TEST(RecordBytesTest, DefaultMaterial) {
  ExpectRungs(QovRyx::MaterialValues(), {{"0.1",
                                          "cdcc4c3f cdcc4c3f cdcc4c3f 0000803f"
                                          "00000000 00000000 00000000 0000803f"
                                          "00000000 00000000 00000000 0000803f"
                                          "0bd7233e 0bd7233e 0bd7233e cdcc4c3e"
                                          "00000000"},
                                         {"0.2", "cdcc4c3e"},
                                         {"0.3", "01"}});
}

TEST(RecordBytesTest, DefaultMiscState) {
  ExpectRungs(QovRyx::MiscState(), {{"0.1",
                                     "00000000"
                                     "8180003f 8180003f 8180003f"
                                     "0000803f 0000803f 0000803f"
                                     "00000000 00000000 00000000"
                                     "00000000"
                                     "00000000 00000000 00000000 00000000"
                                     "00"
                                     "00000000"
                                     "00000000 00000000 00000000"},
                                    {"0.2", "01 00 00 00 00"},
                                    {"0.3", "00000000 00 00000000 01"},
                                    {"0.4", "00"},
                                    {"0.5", "00000000"},
                                    {"0.6",
                                     "01 01 00"
                                     "ffffff7f ffffff7f"
                                     "ffff7f7f ffff7f7f"
                                     "00000000 00000000"}});
}

TEST(RecordBytesTest, SectionState) {
  QovRyx::SectionState state;
  state.mValue1 = 0x04030201;
  state.mFlags = {1, 0, 2, 0xFF, 0, 0, 7};
  state.mPlanes[11] = {1.0F, 2.0F, -1.0F};
  state.mValues[0] = 0x7F800001;  // a signalling NaN
  state.mFlag = 0x80;
  state.mPoints = {{0.5F, 0.0F, 0.0F}};
  state.mFlag2 = 9;
  const std::string zeroPlanes(11 * 24, '0');
  ExpectRungs(state, {{"0.1",
                       "01020304 00000000"
                       "01 00 02 ff 00 00 07" +
                           zeroPlanes +
                           "0000803f 00000040 000080bf"
                           "00000000"
                           "00000000 00000000 00000000"
                           "00000000 00000000 00000000"
                           "0100807f 00000000 00000000 00000000 00000000 00000000"
                           "00000000 00000000 00000000"
                           "80"
                           "00000000"
                           "01000000 0000003f 00000000 00000000"},
                      {"0.2", "09"}});
}

TEST(RecordBytesTest, CAEState) {
  QovRyx::CAEState state;
  state.mName1 = "Stress";
  state.mFlag2 = 2;
  state.mValues1[3] = 0xFFC00001;
  state.mName4 = "n";
  state.mFlag7 = 0x20;
  state.mXyPlots.mPlots.resize(1);
  state.mContourLines.mFlags = {1, 2, 3};
  ExpectRungs(state, {{"0.1",
                       "06000000 537472657373"
                       "00000000"
                       "00000000"
                       "00 02"
                       "00000000 00000000"
                       "00 00 00 00"
                       "00000000 00000000 00000000 0100c0ff"
                       "00 00 00 00"
                       "00000000 00000000 00000000 00000000"
                       "00"
                       "0b000000 03000000 302e37"
                       "1b000000 03000000 302e36  00000000 00000000 00000000 00000000"},
                      {"0.2",
                       "32000000 03000000 302e35"
                       "27000000 03000000 302e31"
                       "00000000 00000000"
                       "00000000 00000000 00000000 00000000 00000000"},
                      {"0.3", "00"},
                      {"0.4", "01000000 6e  00 00"},
                      {"0.5",
                       "33000000 03000000 302e32"
                       "00000000 00000000 00000000"
                       "00"
                       "00000000 00000000 00000000 00000000"
                       "00 00 00"
                       "00000000 00000000"},
                      {"0.6", "20"},
                      {"0.7",
                       "26000000 03000000 302e32"
                       "00000000"
                       "01000000"
                       "0f000000 03000000 302e33 00000000"
                       "00000000"},
                      {"0.8",
                       "1e000000 03000000 302e31"
                       "00000000 00000000 00000000"
                       "01 02 03"
                       "00000000"}});
}

TEST(RecordBytesTest, PartStates) {
  QovRyx::UsrEntityData data;
  data.mName = "n";
  data.mValue2 = 2;
  data.mFlags[7] = 3;
  data.mValues[17] = 4;
  data.mNames = {"m"};
  data.mFlag = 5;
  const std::string zeroValues(17 * 8, '0');
  const std::string first = "01000000 6e  00000000 02000000  00 00 00 00 00 00 00 03" + zeroValues +
                            "04000000  01000000 01000000 6d";
  ExpectRungs(data, {{"0.1", first}, {"0.2", ""}, {"0.3", ""}, {"0.4", "05"}});

  QovRyx::XplodeState xplode;
  xplode.mOffsets["b"].mX = 1.0F;
  xplode.mOffsets["a"].mZ = 1.0F;
  xplode.mRotations["c"] = {1, 2, 3, 4};
  xplode.mOrigin.mY = 2.0F;
  xplode.mNames = {"d"};
  xplode.mFactor = 6;
  ExpectRungs(xplode, {{"0.1",
                        "02000000"
                        "01000000 61  00000000 00000000 0000803f"
                        "01000000 62  0000803f 00000000 00000000"
                        "01000000  01000000 63  01000000 02000000 03000000 04000000"
                        "00000000"
                        "00000000 00000040 00000000"
                        "01000000  01000000 64"},
                       {"0.2", "06000000"}});

  QovRyx::PickNMoveState pick;
  pick.mCentres["e"].mX = 1.0F;
  pick.mTransforms["f"].mQuad[0] = 7;
  pick.mTransforms["f"].mPoint2.mX = 1.0F;
  pick.mTransforms["f"].mMode = 8;
  pick.mFlag = 9;
  pick.mValue = 10;
  ExpectRungs(pick, {{"0.1", "00000000  00000000  01000000 01000000 65 0000803f 00000000 00000000"},
                     {"0.2",
                      "01000000  01000000 66"
                      "37000000 03000000 302e31"
                      "07000000 00000000 00000000 00000000"
                      "00000000 00000000 00000000"
                      "0000803f 00000000 00000000"
                      "08000000"
                      "09"
                      "0a000000"}});
}

TEST(RecordBytesTest, SmallResultStates) {
  QovRyx::CAEVectorPlotState plot;
  plot.mValue3 = 1;
  plot.mFlag1 = 2;
  plot.mValue7 = 3;
  plot.mFlag2 = 4;
  plot.mValue8 = 5;
  ExpectRungs(plot, {{"0.1",
                      "00000000 00000000 01000000  02"
                      "00000000 00000000 00000000 03000000"
                      "04 00 00"},
                     {"0.2", "05000000 00000000"}});

  QovRyx::CAEXYPlotV1CurveState curve;
  curve.mName = "n";
  curve.mPoints = {{1, 2}, {3, 0x7FC00001}};
  ExpectRungs(curve, {{"0.1", "01000000 6e  02000000 01000000 02000000 03000000 0100c07f"}});

  QovRyx::MultiCAEState multi;
  multi.mName = "m";
  multi.mFlags[3] = 4;
  multi.mValue = 5;
  ExpectRungs(multi, {{"0.1", "01000000 6d  00 00 00 04  05000000  00000000"}});
}

TEST(RecordBytesTest, DefaultsOfKeptRecordsHoldWhatTheyNest) {
  EXPECT_EQ(Encode(QovRyx::UserLabelState()), FromHex("37000000 03000000 302e32"
                                                      "0b000000 03000000 302e37"
                                                      "21000000 03000000 302e31"
                                                      "0b000000 03000000 302e31"
                                                      "0b000000 03000000 302e37"));
  EXPECT_EQ(Encode(QovRyx::MeasurementState()), FromHex("37000000 03000000 302e31"
                                                        "16000000 03000000 302e31"
                                                        "0b000000 03000000 302e37"
                                                        "16000000 03000000 302e31"
                                                        "0b000000 03000000 302e37"));
  EXPECT_EQ(Encode(QovRyx::ProbeTableState()), FromHex("4d000000 03000000 302e31"
                                                       "2c000000 03000000 302e31"
                                                       "0b000000 03000000 302e31"
                                                       "16000000 03000000 302e32"
                                                       "0b000000 03000000 302e37"
                                                       "16000000 03000000 302e32"
                                                       "0b000000 03000000 302e37"));
}

TEST(RecordBytesTest, ViewPointUpToItsState) {
  QovRyx::ViewPoint viewPoint;
  viewPoint.mName = "v";
  viewPoint.mFlag = 1;
  const Bytes bytes = Encode(viewPoint);
  const Bytes start = FromHex(
      "03000000 302e32"
      "01000000 76"
      "00000000 00000000 00000000"
      "0000803f 00000000 00000000 00000000"
      "00000000 00000000 00000000"
      "0000803f 0000c842"
      "0000803f 00000000 00000000 00000000"
      "00000000 0000803f 00000000 00000000"
      "00000000 00000000 0000803f 00000000"
      "00000000 00000000 00000000 0000803f"
      "c3f5483f 0000403f"
      "00000000 00000000 00000000"
      "0000803f 00000000 00000000 00000000");
  EXPECT_EQ(bytes.substr(4, start.size()), start);
  EXPECT_EQ(bytes.back(), 1);
}

}  // namespace
}  // namespace Qov::Test
