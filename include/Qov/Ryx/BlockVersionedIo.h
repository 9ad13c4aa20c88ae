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
///   size: u32        bytes of the whole record, this field and the tag among them
///   tag: string      the version of the body
///   body             the fields of rung "0.1", then those that each later rung added
///
/// Files of the container versions "0.1", "0.1a", "0.1b" and "0.2" hold records without the size;
/// QovJbf::ryx_file_version says which rule applies. A reader keeps the bytes that a newer writer
/// appended, and does not change the members of rungs that an older writer did not know.
///
/// A record type derives from QovRyx::RecordOrigin and lists its fields once, in stream order, for
/// every walker: the writer and the reader below, or a printer.
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
/// The type of a member decides how it lies in the block: whatever has CopyToBlock and
/// CopyFromBlock will do, other records, vectors of records and maps to records included.
///
/// Values that are only carried are unsigned integers, so that every bit pattern survives: 32-bit
/// ones, whatever they mean to others, are std::uint32_t, and flags are std::uint8_t.
namespace QovJbf {

/// A type that is written as a versioned record with the tag T::kTag.
template <class T>
concept VersionedRecord = requires {
  { T::kTag } -> std::convertible_to<const char*>;
};

/// A record that is kept as tag and bytes.
template <class T>
concept KeptRecord = VersionedRecord<T> && std::derived_from<T, QovRyx::OpaqueRecord>;

/// How far the body of a record with a given tag goes. Tags beyond the ladder, "0.8" among them,
/// reach every rung.
class QOV_EXPORT RungLadder {
 public:
  explicit RungLadder(std::string_view tag);
  /// Returns a ladder that reaches no rung.
  static RungLadder None() { return {}; }
  /// `rung` is the tag of the version that brought it: "0.1" to "0.9".
  bool Reaches(std::string_view rung) const;

 private:
  RungLadder() = default;

  int mHeight = 0;
};

/// Writes a record's frame: size and tag when it is made, the true size when it is closed.
class QOV_EXPORT FrameWriter {
 public:
  FrameWriter(Block& block, std::string_view tag);
  void Close();

 private:
  Block& mBlock;
  std::uint32_t mStart;
};

/// Reads a record's frame: size and tag when it is made; Close() checks the size and goes to the
/// record's end.
class QOV_EXPORT FrameReader {
 public:
  /// Raises OutOfBounds ("Not enough bytes in the block") for a record that passes the block's end.
  explicit FrameReader(Block& block);
  /// Moves the cursor to the end of the record and returns the unread bytes, which the block owns.
  /// Raises UnknownVersion if more was read than the record holds.
  std::string_view Close();

  /// The tag, byte for byte.
  const std::string& GetTag() const { return mTag; }
  /// Where the record ends; the block's end if the file has no sizes.
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

/// Writes a kept record as it was read.
QOV_EXPORT void CopyToBlock_Kept(Block& block, const QovRyx::OpaqueRecord& record);
/// Reads one. Raises FormatNotSupported, with `name`, when the file has no sizes: nothing tells
/// then where the record ends.
QOV_EXPORT void CopyFromBlock_Kept(Block& block, QovRyx::OpaqueRecord& record, const char* name);

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
    if (mOpen) Look(value);
    return *this;
  }
  bool HasFound() const { return mHasFound; }

 private:
  template <class T>
  void Look(const T& value) {
    if constexpr (KeptRecord<T>) {
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
  // A tag of another length is not a rung, or it ends with a zero byte.
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

/// Appends `record` at the cursor, with its type's current tag, or with the tag and the unknown
/// bytes that it keeps (QovRyx::RecordOrigin).
template <VersionedRecord T>
void CopyToBlock_Versioned(Block& block, const T& record) {
  if constexpr (KeptRecord<T>) {
    CopyToBlock_Kept(block, record);
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

/// Reads one record at the cursor and leaves the cursor after it. Members that the record's
/// version does not carry keep their values, so pass a default-constructed record. A tag and bytes
/// that a record with the current tag would lose become the record's origin.
///
/// Raises UnknownVersion when the body is longer than the record's size; the record is partly
/// filled then.
template <VersionedRecord T>
void CopyFromBlock_Versioned(Block& block, T& record) {
  if constexpr (KeptRecord<T>) {
    CopyFromBlock_Kept(block, record, T::kName);
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

// What makes records ordinary values to Index::Put, JbFile::Get and the containers of BlockIo.h.

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

/// The vector grows record by record: a count that is not true ends where the bytes end, and
/// takes no memory before.
template <VersionedRecord T>
void CopyFromBlock(Block& block, std::vector<T>& records) {
  std::uint32_t count = 0;
  CopyFromBlock(block, count);
  records.clear();
  for (std::uint32_t i = 0; i < count; ++i) CopyFromBlock(block, records.emplace_back());
}

}  // namespace QovJbf
