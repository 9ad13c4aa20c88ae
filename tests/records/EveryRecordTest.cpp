#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>

#include "records/FileVersionScope.h"
#include "records/RandomRecord.h"
#include "records/RecordBytes.h"
#include "support/RecordTypes.h"

namespace Qov::Test {
namespace {

template <class... Records>
struct TypeList {
  /// Calls `check` with a default value of each type.
  template <class Check>
  static void ForEach(Check check) {
    const auto checkOne = [&check](const auto& record) {
      SCOPED_TRACE(typeid(record).name());
      check(record);
    };
    (checkOne(Records()), ...);
  }
};

/// The records with a field list.
using EveryRecord = EveryRecordIn<TypeList>;

TEST(EveryRecordTest, KeepsUnknownTagsAndBytesAtEveryLevel) {
  EveryRecord::ForEach([]<class Record>(const Record&) {
    std::uint32_t seed = 0;
    for (const char* tag : {"current", "0.0", "0.8", "0.9", "1.0", "0.10", "", "newest"}) {
      const auto tagOf = [&]<class T>(const T&) {
        return std::string(std::string_view(tag) == "current" ? T::kTag : tag);
      };
      for (const Bytes& tail : {Bytes(), Bytes("?"), Bytes(100, '\0')}) {
        const Bytes bytes = EncodeForeign(RandomRecord<Record>(++seed), tagOf, tail);
        QovJbf::Block block = BlockOf(bytes + "?");
        Record record;
        CopyFromBlock(block, record);
        EXPECT_EQ(block.GetRemaining(), 1U);
        const Record copy = record;
        EXPECT_TRUE(Encode(copy) == bytes) << tag << " " << tail.size();
      }
    }
  });
}

/// True for records that gained an opaque record after "0.1". They keep that version, because the
/// content of an opaque record is unknown.
template <class T>
constexpr bool kStaysOld =
    std::is_same_v<T, QovRyx::ViewState> || std::is_same_v<T, QovRyx::CAEState>;

TEST(EveryRecordTest, UpdatesOlderRecordsUnlessAnOpaqueOneIsMissing) {
  EveryRecord::ForEach([]<class Record>(const Record&) {
    for (const std::string tag : {"0.1", "0.2", "0.3", "0.4", "0.5", "0.6", "0.7"}) {
      const auto readTag = [&]<class T>(const T&) { return std::min(tag, std::string(T::kTag)); };
      const auto writtenTag = [&]<class T>(const T&) {
        return std::string(kStaysOld<T> && tag == "0.1" ? "0.1" : T::kTag);
      };
      const auto record = RandomRecord<Record>(7, tag);
      const Bytes read = EncodeForeign(record, readTag);
      EXPECT_TRUE(Encode(Decode<Record>(read)) == EncodeForeign(record, writtenTag)) << tag;
      const Bytes withTail = EncodeForeign(record, readTag, "tail");
      EXPECT_TRUE(Encode(Decode<Record>(withTail)) == withTail) << tag;
    }
  });
}

TEST(EveryRecordTest, WrongSizesAndTruncationsAreErrors) {
  EveryRecord::ForEach([]<class Record>(const Record&) {
    const Bytes bytes = Encode(RandomRecord<Record>(10));
    for (const std::size_t size : {bytes.size() - 1, std::size_t{4}, std::size_t{0}}) {
      EXPECT_EQ(DecodingError<Record>(WithSize(bytes, size)), ErrorType::UnknownVersion) << size;
    }
    EXPECT_EQ(DecodingError<Record>(WithSize(bytes, 0xFFFFFFFF)), ErrorType::OutOfBounds);
    for (std::size_t size = 0; size < bytes.size(); ++size) {
      const Bytes cut = bytes.substr(0, size);
      ASSERT_EQ(DecodingError<Record>(cut), ErrorType::OutOfBounds) << size;
      if (size < 4) continue;
      // With a matching size, the fields are truncated instead of the record.
      ASSERT_EQ(DecodingError<Record>(WithSize(cut, size)), ErrorType::OutOfBounds) << size;
    }
  });
}

/// The opaque records, whose content is kept as it is.
using EveryOpaqueRecord =
    TypeList<QovRyx::CAELegendState, QovRyx::CAEProbeState, QovRyx::CAEAnimationState,
             QovRyx::CAEXYPlotV1State, QovRyx::CAEScalarInfo, QovRyx::LabelBaseState,
             QovRyx::LabelState, QovRyx::TwoDLabelState, QovRyx::UserLabelState,
             QovRyx::TableLabelState, QovRyx::TableState, QovRyx::TwoDTableState,
             QovRyx::ProbeLabelState, QovRyx::ProbeTableState, QovRyx::ThreeD_DistanceState,
             QovRyx::ThreePointArcState, QovRyx::MeasurementState>;

TEST(EveryOpaqueRecordTest, IsWrittenExactlyAsItWasRead) {
  EveryOpaqueRecord::ForEach([]<class Record>(const Record&) {
    for (const std::string& tag : {std::string("0.1"), std::string(), std::string("0.1\0x", 5)}) {
      for (const char* body : {"", "00", "ff 00 12 34 56"}) {
        const Bytes bytes = MakeRecord(tag, FromHex(body));
        QovJbf::Block block = BlockOf(bytes + "?");
        Record record;
        CopyFromBlock(block, record);
        EXPECT_EQ(block.GetRemaining(), 1U);
        EXPECT_EQ(Encode(record), bytes);
      }
    }
  });
}

TEST(EveryOpaqueRecordTest, RefusesInvalidSizes) {
  const Bytes bytes = MakeRecord("0.1", "123");
  for (const std::size_t size : {0U, 4U, 8U, 10U, 15U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    EXPECT_EQ(DecodingError<QovRyx::LabelState>(WithSize(bytes, size)),
              size < 15 ? ErrorType::UnknownVersion : ErrorType::OutOfBounds)
        << size;
  }
}

TEST(EveryOpaqueRecordTest, CannotBeReadFromFilesWithoutSizes) {
  EveryOpaqueRecord::ForEach([]<class Record>(const Record&) {
    for (const std::string version : {"0.1", "0.1a", "0.1b", "0.2"}) {
      const QovRyx::FileVersionScope scope(version);
      ExpectError(ErrorType::FormatNotSupported,
                  std::string(Record::kName) + " in a file of version " + version,
                  [] { Decode<Record>(MakeRecord("0.1", {})); });
    }
  });
}

}  // namespace
}  // namespace Qov::Test
