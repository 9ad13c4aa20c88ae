#include "Qov/Ryx/Sequencer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "records/RecordBytes.h"

namespace Qov::Test {
namespace {

const std::string kEmptyStart = "00000000 00000000 00000000";  // settings, sequences, name

template <class T>
T& Add(QovRyx::SequencerData& data) {
  auto action = std::make_unique<T>();
  T& reference = *action;
  data.mActions.mSlots.push_back(std::move(action));
  return reference;
}

/// Returns one action of each known class, in the order of their type numbers.
QovRyx::SequencerData MakeOneOfEach() {
  QovRyx::SequencerData data;
  Add<QovRyx::RotateAction>(data).mVector = {1, 2, 0x7FA00000};
  Add<QovRyx::MoveAction>(data).mValue = 4;
  Add<QovRyx::TransformAction>(data).mQuad = {0, 0, 0, 5};
  Add<QovRyx::ApplyColorAction>(data).mValues = {6};
  Add<QovRyx::ApplyViewPointAction>(data).mViewPointName = "v";
  Add<QovRyx::PlayAudioAction>(data).mAudio = "a";
  return data;
}

const Bytes kOneOfEachBytes = MakeRecord(
    "0.1", FromHex(kEmptyStart + "06000000 0000 0100 0200 0300 0400 0500"
                                 "1b000000 03000000 302e31  01000000 02000000 0000a07f 00000000"
                                 "1b000000 03000000 302e31  00000000 00000000 00000000 04000000"
                                 "27000000 03000000 302e31  00000000 00000000 00000000"
                                 "                          00000000 00000000 00000000 05000000"
                                 "13000000 03000000 302e31  01000000 06000000"
                                 "10000000 03000000 302e31  01000000 76"
                                 "10000000 03000000 302e31  01000000 61"));

TEST(SequencerTest, SettingsAndSequencesAreNestedRecords) {
  QovRyx::SequencerData data;
  data.mActionSettings.resize(1);
  data.mActionSettings[0].mName = "n";
  data.mActionSettings[0].mFlag3 = 0xEE;
  data.mActionSettings[0].mIndices = {7};
  data.mActionSettings[0].mSupport.mFlag = 2;
  data.mSequences["s"].resize(1);
  data.mSequences["s"][0].mValue3 = 3;
  data.mName = "q";
  const std::string zeroMatrices(2 * (36 + 48), '0');
  const Bytes bytes = MakeRecord("0.1", FromHex("01000000"
                                                "87000000 03000000 302e31"
                                                "01000000 6e  00000000  00 00 ee"
                                                "01000000 07000000"
                                                "68000000 03000000 302e31" +
                                                zeroMatrices +
                                                "00000000 02 00000000"
                                                "01000000  01000000 73  01000000"
                                                "17000000 03000000 302e31"
                                                "00000000 00000000 03000000"
                                                "01000000 71"
                                                "00000000"));
  EXPECT_EQ(Encode(data), bytes);
  EXPECT_EQ(Encode(Decode<QovRyx::SequencerData>(bytes)), bytes);
}

TEST(SequencerTest, ActionsAreReadAsTheirClass) {
  EXPECT_EQ(Encode(MakeOneOfEach()), kOneOfEachBytes);
  const auto read = Decode<QovRyx::SequencerData>(kOneOfEachBytes);
  ASSERT_EQ(read.mActions.mSlots.size(), 6U);
  for (int type = 0; type < 6; ++type) {
    EXPECT_EQ(read.mActions.mSlots[static_cast<std::size_t>(type)]->ActionType(), type);
  }
  EXPECT_EQ(Encode(read), kOneOfEachBytes);
}

TEST(SequencerTest, CopiesAreDeep) {
  QovRyx::SequencerData original = MakeOneOfEach();
  original.mActions.mSlots.push_back(nullptr);
  Add<QovRyx::InvalidAction>(original);
  QovRyx::SequencerData copy;
  copy = original;
  EXPECT_EQ(Encode(copy), Encode(original));
  EXPECT_NE(copy.mActions.mSlots[0], original.mActions.mSlots[0]);
  EXPECT_EQ(copy.mActions.mSlots[6], nullptr);
  EXPECT_EQ(copy.mActions.mSlots[7]->ActionType(), -1);
}

TEST(SequencerTest, ActionsOfUnknownTypesAreKept) {
  const Bytes bytes = MakeRecord("0.1", FromHex(kEmptyStart + "04000000 0600 0500 2a00 ffff") +
                                            MakeRecord("2.0", FromHex("010203")) +
                                            MakeRecord("0.1", FromHex("01000000 61")) +
                                            MakeRecord("", FromHex("04")) + MakeRecord("0.1", {}));
  const auto read = Decode<QovRyx::SequencerData>(bytes);
  const QovRyx::SequencerData copy = read;
  EXPECT_EQ(Encode(copy), bytes);
  const auto& slots = copy.mActions.mSlots;
  ASSERT_EQ(slots.size(), 4U);
  EXPECT_EQ(slots[0]->ActionType(), 6);
  EXPECT_EQ(slots[0]->GetOriginTag(), "2.0");
  EXPECT_EQ(slots[0]->GetTail(), "\1\2\3");
  EXPECT_EQ(slots[1]->ActionType(), 5);
  EXPECT_EQ(slots[3], nullptr);
}

TEST(SequencerTest, EmptySlotsCanBeReadAgain) {
  QovRyx::SequencerData data;
  data.mActions.mSlots.emplace_back();
  const Bytes bytes =
      MakeRecord("0.1", FromHex(kEmptyStart + "01000000 ffff") + MakeRecord("0.1", {}));
  EXPECT_EQ(Encode(data), bytes);
  EXPECT_EQ(Encode(Decode<QovRyx::SequencerData>(bytes)), bytes);
}

TEST(SequencerTest, InvalidActionsAreWrittenWithoutABody) {
  QovRyx::SequencerData data;
  Add<QovRyx::InvalidAction>(data);
  const Bytes bytes = Encode(data);
  EXPECT_EQ(bytes, MakeRecord("0.1", FromHex(kEmptyStart + "01000000 ffff")));
  EXPECT_EQ(DecodingError<QovRyx::SequencerData>(bytes), ErrorType::OutOfBounds);
  // The reader takes the following bytes for the missing record and finds a wrong size.
  EXPECT_EQ(DecodingError<QovRyx::SequencerData>(bytes + Encode(QovRyx::InvalidAction())),
            ErrorType::UnknownVersion);
}

}  // namespace
}  // namespace Qov::Test
