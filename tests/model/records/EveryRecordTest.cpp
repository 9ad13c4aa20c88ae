#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "Qov/Ryx/FileVersionScope.h"
#include "model/records/RandomRecord.h"
#include "model/records/RecordBytes.h"
#include "support/RecordTypes.h"

/// What holds for every record with a field list.
namespace Qov::Test {
namespace {

template <class T>
class EveryRecord : public testing::Test {};

TYPED_TEST_SUITE(EveryRecord, EveryRecordIn<testing::Types>);

TYPED_TEST(EveryRecord, RandomValuesSurviveBitForBit) {
  for (std::uint32_t seed = 0; seed < 20; ++seed) {
    const Bytes bytes = Encode(RandomRecord<TypeParam>(seed));
    QovJbf::Block block = MakeBlock(bytes);
    TypeParam record;
    CopyFromBlock(block, record);
    EXPECT_EQ(block.GetRemaining(), 0U);
    EXPECT_EQ(Encode(record), bytes);
  }
}

TYPED_TEST(EveryRecord, OlderTagsLeaveLaterRungsAtTheirDefaults) {
  for (const std::string tag : {"0.1", "0.2", "0.3", "0.4", "0.5", "0.6", "0.7"}) {
    SCOPED_TRACE(tag);
    const auto record = RandomRecord<TypeParam>(7, tag);
    EXPECT_EQ(Encode(Decode<TypeParam>(EncodeAs(record, tag))), Encode(record));
  }
}

TYPED_TEST(EveryRecord, UnknownTagsReadEveryRung) {
  const auto record = RandomRecord<TypeParam>(8);
  for (const std::string tag : {"0.8", "0.9", "1.0", "0.10", "", "newest"}) {
    EXPECT_EQ(Encode(Decode<TypeParam>(EncodeAs(record, tag))), Encode(record)) << tag;
  }
}

TYPED_TEST(EveryRecord, SkipsWhatANewerWriterAppended) {
  const Bytes bytes = Encode(RandomRecord<TypeParam>(9));
  QovJbf::Block block = MakeBlock(WithSize(bytes, bytes.size() + 3) + FromHex("aa bb cc dd"));
  TypeParam record;
  CopyFromBlock(block, record);
  EXPECT_EQ(block.GetRemaining(), 1U);
  EXPECT_EQ(Encode(record), bytes);
}

TYPED_TEST(EveryRecord, RefusesASizeSmallerThanTheBody) {
  const Bytes bytes = Encode(RandomRecord<TypeParam>(10));
  for (const std::size_t size : {bytes.size() - 1, std::size_t{4}, std::size_t{0}}) {
    EXPECT_EQ(DecodingError<TypeParam>(WithSize(bytes, size)), ErrorType::UnknownVersion) << size;
  }
}

TYPED_TEST(EveryRecord, EveryTruncationIsAnError) {
  const Bytes bytes = Encode(RandomRecord<TypeParam>(11));
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    const Bytes cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
    ASSERT_EQ(DecodingError<TypeParam>(cut), ErrorType::OutOfBounds) << size;
    if (size < 4) continue;
    // The size agrees with the cut, so that the fields themselves meet the end.
    ASSERT_EQ(DecodingError<TypeParam>(WithSize(cut, size)), ErrorType::OutOfBounds) << size;
  }
}

TYPED_TEST(EveryRecord, DamagedBytesNeverDoHarm) {
  const Bytes bytes = Encode(RandomRecord<TypeParam>(12));
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    Bytes damaged = bytes;
    damaged[i] ^= 0xFF;
    const ErrorType error = DecodingError<TypeParam>(damaged);
    EXPECT_TRUE(error == ErrorType::OutOfBounds || error == ErrorType::UnknownVersion ||
                error == ErrorType::InvalidException)
        << i;
  }
}

template <class T>
class EveryKeptRecord : public testing::Test {};

using KeptRecordTypes =
    testing::Types<QovRyx::CAELegendState, QovRyx::CAEProbeState, QovRyx::CAEAnimationState,
                   QovRyx::CAEXYPlotV1State, QovRyx::CAEScalarInfo, QovRyx::LabelBaseState,
                   QovRyx::LabelState, QovRyx::TwoDLabelState, QovRyx::UserLabelState,
                   QovRyx::TableLabelState, QovRyx::TableState, QovRyx::TwoDTableState,
                   QovRyx::ProbeLabelState, QovRyx::ProbeTableState, QovRyx::ThreeD_DistanceState,
                   QovRyx::ThreePointArcState, QovRyx::MeasurementState>;
TYPED_TEST_SUITE(EveryKeptRecord, KeptRecordTypes);

TYPED_TEST(EveryKeptRecord, IsWrittenExactlyAsItWasRead) {
  const std::string oddTag("0.1\0x", 5);
  for (const std::string& tag : {std::string("0.1"), std::string(), oddTag}) {
    for (const Bytes& body : {Bytes(), FromHex("00"), FromHex("ff 00 12 34 56")}) {
      const Bytes bytes = MakeRecord(tag, body);
      QovJbf::Block block = MakeBlock(bytes + FromHex("77"));
      TypeParam record;
      CopyFromBlock(block, record);
      EXPECT_EQ(block.GetRemaining(), 1U);
      EXPECT_EQ(Encode(record), bytes);
    }
  }
}

TYPED_TEST(EveryKeptRecord, RefusesSizesThatCannotBe) {
  const Bytes bytes = MakeRecord("0.1", FromHex("01 02 03"));
  for (const std::size_t size : {0U, 4U, 8U, 10U}) {
    EXPECT_EQ(DecodingError<TypeParam>(WithSize(bytes, size)), ErrorType::UnknownVersion) << size;
  }
  for (const std::size_t size : {15U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    EXPECT_EQ(DecodingError<TypeParam>(WithSize(bytes, size)), ErrorType::OutOfBounds) << size;
  }
}

TYPED_TEST(EveryKeptRecord, CannotBeReadWhereFilesHoldNoSizes) {
  for (const std::string version : {"0.1", "0.1a", "0.1b", "0.2"}) {
    const QovRyx::FileVersionScope scope(version);
    try {
      Decode<TypeParam>(MakeRecord("0.1", {}));
      ADD_FAILURE() << "read in a file of version " << version;
    } catch (const Util::Exception& error) {
      EXPECT_EQ(error.GetType(), ErrorType::FormatNotSupported);
      const std::string text = error.GetLogMessage();
      EXPECT_NE(text.find(TypeParam::kName), std::string::npos) << text;
      EXPECT_NE(text.find("version " + version), std::string::npos) << text;
    }
  }
}

}  // namespace
}  // namespace Qov::Test
