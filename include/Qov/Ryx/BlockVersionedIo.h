#pragma once

#include <concepts>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Jbf/Block.h"
#include "Qov/Jbf/BlockIo.h"
#include "Qov/Ryx/OpaqueRecord.h"
#include "Qov/Ryx/RecordOrigin.h"

/// The frame and the field lists of versioned records.
///
///   size: u32        bytes of the whole record, including this field and the tag
///   tag: string      the version of the body
///   body             the fields of rung "0.1", then those that each later rung added
///
/// Files of the oldest container versions hold records without the size (docs/format.md, "Older
/// versions"); QovJbf::ryx_file_version is the version that applies. A reader keeps the bytes that
/// a newer writer appended, and does not change the members of rungs that an older writer lacked.
///
/// A record type derives from QovRyx::RecordOrigin and lists its fields once, in stream order, for
/// every walker: the writer, the reader, a printer, a checker.
///
///   struct CAEXYPlotMgrState : RecordOrigin {
///     static constexpr const char* kTag = "0.2";
///     std::uint32_t mValue1 = 0;
///     ...
///     template <class Self, class Walker>           // Self may be const
///     static void Walk(Self& self, Walker& walk) {
///       walk.Rung("0.1").Field("value1", self.mValue1).Field("plots", self.mPlots);
///       walk.Rung("0.2").Field("value2", self.mValue2);
///     }
///   };
///
/// The type of a member defines its encoding. Every type with CopyToBlock and CopyFromBlock is
/// possible, including records, vectors of records and maps to records.
///
/// Values that are carried without being used are unsigned integers, so that every bit pattern is
/// preserved: 32-bit values of any meaning are std::uint32_t, and flags are std::uint8_t.
namespace QovJbf {

/// A type that is written as a versioned record with the tag T::kTag.
template <class T>
concept VersionedRecord = requires {
  { T::kTag } -> std::convertible_to<const char*>;
};

/// A record that is carried as its tag and the bytes of its body (QovRyx::OpaqueRecord).
template <class T>
concept OpaqueRecordType = VersionedRecord<T> && std::derived_from<T, QovRyx::OpaqueRecord>;

/// The rungs that the body of a record with a given tag contains. A rung is the set of fields that
/// one version brought. A body with a tag after "0.7", or with an unknown tag, contains every rung.
class QOV_EXPORT RungLadder {
 public:
  explicit RungLadder(std::string_view tag);
  /// Returns a ladder that reaches no rung.
  static RungLadder None() { return {}; }
  /// Returns true if the body contains `rung`, the tag of the version that brought it: "0.1" to
  /// "0.9".
  bool Reaches(std::string_view rung) const;

 private:
  RungLadder() = default;

  int mHeight = 0;
};

/// Writes the frame of a record. The constructor writes the tag and a placeholder for the size,
/// Close the size.
class QOV_EXPORT FrameWriter {
 public:
  FrameWriter(Block& block, std::string_view tag);
  void Close();

 private:
  Block& mBlock;
  std::uint32_t mStart;
};

/// Reads the frame of a record. The constructor reads the size and the tag, Close checks the size.
class QOV_EXPORT FrameReader {
 public:
  /// Raises OutOfBounds ("Not enough bytes in the block") if the record ends after the block.
  explicit FrameReader(Block& block);
  /// Moves the cursor to the end of the record. Returns the unread bytes, which the block owns.
  /// Raises UnknownVersion if more bytes were read than the record has.
  std::string_view Close();

  /// Returns the tag, byte for byte.
  const std::string& GetTag() const { return mTag; }
  /// Returns the end of the record in the block, or the end of the block if the file has no sizes.
  std::uint32_t GetEnd() const { return mEnd; }

 private:
  Block& mBlock;
  bool mHasSize;
  std::uint32_t mEnd;
  std::string mTag;
};

/// The rungs of a record that a walker visits: those that a tag reaches, or the others.
enum class Rungs { Reached, Lacking };

/// The walker that writes the fields of some rungs.
class FieldWriter {
 public:
  FieldWriter(Block& block, std::string_view tag, Rungs rungs = Rungs::Reached)
      : mBlock(block), mLadder(tag), mReached(rungs == Rungs::Reached) {}

  FieldWriter& Rung(std::string_view rung) {
    mOpen = mLadder.Reaches(rung) == mReached;
    return *this;
  }
  template <class T>
  FieldWriter& Field(const char* /*name*/, const T& value) {
    if (mOpen) CopyToBlock(mBlock, value);
    return *this;
  }

 private:
  Block& mBlock;
  RungLadder mLadder;
  bool mReached;
  bool mOpen = false;
};

/// The walker that reads the fields of the rungs that a tag reaches.
class FieldReader {
 public:
  FieldReader(Block& block, std::string_view tag) : mBlock(block), mLadder(tag) {}

  FieldReader& Rung(std::string_view rung) {
    mOpen = mLadder.Reaches(rung);
    return *this;
  }
  template <class T>
  FieldReader& Field(const char* /*name*/, T& value) {
    if (mOpen) CopyFromBlock(mBlock, value);
    return *this;
  }

 private:
  Block& mBlock;
  RungLadder mLadder;
  bool mOpen = false;
};

/// Writes an opaque record as it was read.
QOV_EXPORT void CopyToBlock_Opaque(Block& block, const QovRyx::OpaqueRecord& record);
/// Reads an opaque record. Raises FormatNotSupported, with `name`, if the file has no sizes,
/// because then the end of the record is unknown.
QOV_EXPORT void CopyFromBlock_Opaque(Block& block, QovRyx::OpaqueRecord& record, const char* name);

namespace Detail {

QOV_EXPORT bool HaveSameBytes(const Block& left, const Block& right);

/// The walker that checks whether the fields that a tag lacks include opaque records.
class OpaqueFinder {
 public:
  explicit OpaqueFinder(RungLadder ladder) : mLadder(ladder) {}

  OpaqueFinder& Rung(std::string_view rung) {
    mOpen = !mLadder.Reaches(rung);
    return *this;
  }
  template <class T>
  OpaqueFinder& Field(const char* /*name*/, const T& value) {
    if (mOpen) Search(value);
    return *this;
  }
  bool HasFound() const { return mHasFound; }

 private:
  template <class T>
  void Search(const T& value) {
    if constexpr (OpaqueRecordType<T>) {
      mHasFound = true;
    } else if constexpr (VersionedRecord<T>) {
      OpaqueFinder nested(RungLadder::None());
      T::Walk(value, nested);
      mHasFound = mHasFound || nested.mHasFound;
    }
  }

  RungLadder mLadder;
  bool mOpen = false;
  bool mHasFound = false;
};

/// Returns true if a record that was read with `tag`, and has nothing after its known fields, can
/// be written with the current tag. The tag must be the current one, or an older one from which no
/// opaque record is missing, because an opaque record cannot be invented.
template <VersionedRecord T>
bool CanTakeCurrentTag(std::string_view tag) {
  if (tag == T::kTag) return true;
  // A tag of another length is unknown, or it ends with a zero byte.
  if (tag.size() != std::string_view(T::kTag).size() || RungLadder(tag).Reaches(T::kTag)) {
    return false;
  }
  OpaqueFinder finder{RungLadder(tag)};
  const T newRecord;
  T::Walk(newRecord, finder);
  return !finder.HasFound();
}

/// Returns true if `record` differs from a new one in a field that `tag` lacks.
template <VersionedRecord T>
bool HasFieldsBeyond(const T& record, std::string_view tag) {
  Block fields;
  Block defaults;
  FieldWriter walk(fields, tag, Rungs::Lacking);
  FieldWriter walkDefaults(defaults, tag, Rungs::Lacking);
  const T newRecord;
  T::Walk(record, walk);
  T::Walk(newRecord, walkDefaults);
  return !HaveSameBytes(fields, defaults);
}

/// Returns the tag that `record` is written with: its own if it keeps one, unless fields that the
/// tag does not reach have been edited.
template <VersionedRecord T>
std::string_view ChooseTag(const T& record) {
  if (!record.HasOrigin()) return T::kTag;
  const std::string_view tag = record.GetOriginTag();
  if (RungLadder(tag).Reaches(T::kTag) || !HasFieldsBeyond(record, tag)) return tag;
  return T::kTag;
}

}  // namespace Detail

/// Appends `record` at the cursor, with the current tag of its type, or with the tag and the
/// unknown bytes of its origin (QovRyx::RecordOrigin).
template <VersionedRecord T>
void CopyToBlock_Versioned(Block& block, const T& record) {
  if constexpr (OpaqueRecordType<T>) {
    CopyToBlock_Opaque(block, record);
  } else {
    const std::string_view tag = Detail::ChooseTag(record);
    FrameWriter frame(block, tag);
    FieldWriter walk(block, tag);
    T::Walk(record, walk);
    const std::string_view tail = record.GetTail();
    block.Put(tail.data(), static_cast<std::uint32_t>(tail.size()));
    frame.Close();
  }
}

/// Reads one record at the cursor and leaves the cursor after it. Members of rungs that the stored
/// record lacks keep their values, so pass a default-constructed record. A tag and bytes that a
/// record with the current tag would lose become the origin of the record.
///
/// Raises UnknownVersion if the body is longer than the size of the record, which is partly filled
/// then.
template <VersionedRecord T>
void CopyFromBlock_Versioned(Block& block, T& record) {
  if constexpr (OpaqueRecordType<T>) {
    CopyFromBlock_Opaque(block, record, T::kName);
  } else {
    FrameReader frame(block);
    FieldReader walk(block, frame.GetTag());
    T::Walk(record, walk);
    const std::string_view tail = frame.Close();
    if (tail.empty() && Detail::CanTakeCurrentTag<T>(frame.GetTag())) {
      record.ForgetOrigin();
    } else {
      record.SetOrigin(frame.GetTag(), tail);
    }
  }
}

// Overloads for Index::Put, JbFile::Get and the containers of BlockIo.h.

template <VersionedRecord T>
void CopyToBlock(Block& block, const T& record) {
  CopyToBlock_Versioned(block, record);
}

template <VersionedRecord T>
void CopyFromBlock(Block& block, T& record) {
  CopyFromBlock_Versioned(block, record);
}

template <VersionedRecord T>
void CopyToBlock(Block& block, const std::vector<T>& records) {
  CopyToBlock(block, static_cast<std::uint32_t>(records.size()));
  for (const T& record : records) CopyToBlock(block, record);
}

/// Appends record by record, so that a false count takes no memory before the bytes end.
template <VersionedRecord T>
void CopyFromBlock(Block& block, std::vector<T>& records) {
  std::uint32_t count = 0;
  CopyFromBlock(block, count);
  records.clear();
  for (std::uint32_t i = 0; i < count; ++i) CopyFromBlock(block, records.emplace_back());
}

}  // namespace QovJbf
