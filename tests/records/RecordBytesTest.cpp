#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "Qov/Ryx/MaterialValues.h"
#include "Qov/Ryx/ModifierInfo.h"
#include "Qov/Ryx/ViewPoint.h"
#include "records/RecordBytes.h"

/// Golden bytes of records, one field a line.
namespace Qov::Test {
namespace {

/// Tags, each with the bytes that its version adds to the body.
using RungBytes = std::vector<std::pair<std::string, Bytes>>;

/// Reads the bytes of one record from golden.txt, which lists a name, then each tag and its bytes.
RungBytes ReadRungs(const std::string& name) {
  std::ifstream file(RECORDS_GOLDEN);
  RungBytes rungs;
  bool isWithin = false;
  for (std::string line; std::getline(file, line);) {
    const bool isBytes = line.starts_with(' ');
    const bool isTag = line.starts_with("0.");
    if (!isBytes && !isTag) isWithin = line == name;
    if (isWithin && isTag) rungs.push_back({line, {}});
    if (isWithin && isBytes) rungs.back().second += FromHex(line);
  }
  return rungs;
}

/// Checks writing and reading of the record at every version.
template <class T>
void ExpectRungs(const std::string& name, const T& record) {
  const RungBytes rungs = ReadRungs(name);
  ASSERT_FALSE(rungs.empty()) << name;
  Bytes body;
  for (const auto& [tag, added] : rungs) {
    SCOPED_TRACE(name + " " + tag);
    body += added;
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

TEST(RecordBytesTest, Defaults) {
  ExpectRungs("MaterialValues", QovRyx::MaterialValues());
  ExpectRungs("MiscState", QovRyx::MiscState());
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
  ExpectRungs("SectionState", state);
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
  ExpectRungs("CAEState", state);
}

TEST(RecordBytesTest, PartStates) {
  QovRyx::UsrEntityData data;
  data.mName = "n";
  data.mValue2 = 2;
  data.mFlags[7] = 3;
  data.mValues[17] = 4;
  data.mNames = {"m"};
  data.mFlag = 5;
  ExpectRungs("UsrEntityData", data);

  QovRyx::XplodeState xplode;
  xplode.mOffsets["b"].mX = 1.0F;
  xplode.mOffsets["a"].mZ = 1.0F;
  xplode.mRotations["c"] = {1, 2, 3, 4};
  xplode.mOrigin.mY = 2.0F;
  xplode.mNames = {"d"};
  xplode.mFactor = 6;
  ExpectRungs("XplodeState", xplode);

  QovRyx::PickNMoveState pick;
  pick.mCentres["e"].mX = 1.0F;
  pick.mTransforms["f"].mQuad[0] = 7;
  pick.mTransforms["f"].mPoint2.mX = 1.0F;
  pick.mTransforms["f"].mMode = 8;
  pick.mFlag = 9;
  pick.mValue = 10;
  ExpectRungs("PickNMoveState", pick);
}

TEST(RecordBytesTest, SmallResultStates) {
  QovRyx::CAEVectorPlotState plot;
  plot.mValue3 = 1;
  plot.mFlag1 = 2;
  plot.mValue7 = 3;
  plot.mFlag2 = 4;
  plot.mValue8 = 5;
  ExpectRungs("CAEVectorPlotState", plot);

  QovRyx::CAEXYPlotV1CurveState curve;
  curve.mName = "n";
  curve.mPoints = {{1, 2}, {3, 0x7FC00001}};
  ExpectRungs("CAEXYPlotV1CurveState", curve);

  QovRyx::MultiCAEState multi;
  multi.mName = "m";
  multi.mFlags[3] = 4;
  multi.mValue = 5;
  ExpectRungs("MultiCAEState", multi);
}

TEST(RecordBytesTest, DefaultsOfOpaqueRecordsHoldNestedRecords) {
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

TEST(RecordBytesTest, ViewPointBeforeItsState) {
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
