#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "Qov/Ryx/BlockVersionedIo.h"
#include "Qov/Ryx/Sequencer.h"
#include "support/Blocks.h"
#include "support/Errors.h"

/// Records as bytes, for tests that compare or damage them.
namespace Qov::Test {

using Bytes = std::string;

/// Returns the bytes of hex digits such as "0a 0B"; spaces are ignored.
inline Bytes FromHex(const std::string& text) {
  Bytes bytes;
  std::string digits;
  for (const char c : text) {
    if (c == ' ') continue;
    digits += c;
    if (digits.size() < 2) continue;
    bytes += static_cast<char>(std::stoul(digits, nullptr, 16));
    digits.clear();
  }
  return bytes;
}

template <class T>
Bytes Encode(const T& value) {
  QovJbf::Block block;
  CopyToBlock(block, value);
  return ContentOf(block);
}

/// Encodes the record as version `tag`, as a writer of that version did. Nested records are
/// current.
template <class T>
Bytes EncodeAs(const T& record, const std::string& tag) {
  QovJbf::Block block;
  QovJbf::FrameWriter frame(block, tag);
  QovJbf::FieldWriter walk(block, tag);
  T::Walk(record, walk);
  frame.Close();
  return ContentOf(block);
}

template <class T>
T Decode(const Bytes& bytes) {
  QovJbf::Block block = BlockOf(bytes);
  T value;
  CopyFromBlock(block, value);
  return value;
}

/// Returns the kind of error that decoding raises, or InvalidException if it succeeds.
template <class T>
ErrorType DecodingError(const Bytes& bytes) {
  try {
    Decode<T>(bytes);
  } catch (const Util::Exception& error) {
    return error.GetType();
  }
  return ErrorType::InvalidException;
}

/// Returns the record with another size field.
inline Bytes WithSize(const Bytes& record, std::size_t size) {
  return Image(static_cast<std::uint32_t>(size)) + record.substr(4);
}

/// Returns a complete record: size, tag and body.
inline Bytes MakeRecord(const std::string& tag, const Bytes& body) {
  const std::uint32_t length = static_cast<std::uint32_t>(tag.size());
  return Image(static_cast<std::uint32_t>(8 + length + body.size())) + Image(length) + tag + body;
}

/// Writes records as another program may do: at every level, `tagOf` returns the tag of a record,
/// and `tail` follows its known fields.
template <class TagOf>
class ForeignWriter {
 public:
  ForeignWriter(const TagOf& tagOf, const Bytes& tail, const std::string& tag)
      : mTagOf(tagOf), mTail(tail), mLadder(tag) {}

  ForeignWriter& Rung(std::string_view rung) {
    mOpen = mLadder.Reaches(rung);
    return *this;
  }
  template <class T>
  ForeignWriter& Field(const char* /*name*/, const T& value) {
    if (mOpen) mBody += Write(value);
    return *this;
  }
  template <class T>
  Bytes Write(const T& value) const {
    if constexpr (QovJbf::VersionedRecord<T> && !QovJbf::OpaqueRecordType<T>) {
      const std::string tag = mTagOf(value);
      ForeignWriter nested(mTagOf, mTail, tag);
      T::Walk(value, nested);
      return MakeRecord(tag, nested.mBody + mTail);
    } else {
      return Encode(value);
    }
  }
  template <QovJbf::VersionedRecord T>
  Bytes Write(const std::vector<T>& records) const {
    Bytes bytes = Image(static_cast<std::uint32_t>(records.size()));
    for (const T& record : records) bytes += Write(record);
    return bytes;
  }
  template <class T>
  Bytes Write(const std::map<std::string, T>& values) const {
    Bytes bytes = Image(static_cast<std::uint32_t>(values.size()));
    for (const auto& [key, value] : values) bytes += Encode(key) + Write(value);
    return bytes;
  }
  Bytes Write(const QovRyx::ActionList& actions) const {
    Bytes types = Image(static_cast<std::uint32_t>(actions.mSlots.size()));
    Bytes bodies;
    for (const auto& slot : actions.mSlots) {
      types += Image(static_cast<std::uint16_t>(slot == nullptr ? 0xFFFF : slot->ActionType()));
      if (slot == nullptr) {
        bodies += Write(QovRyx::InvalidAction());
      } else {
        QovRyx::VisitAction(*slot, [&](const auto& action) { bodies += Write(action); });
      }
    }
    return types + bodies;
  }

 private:
  const TagOf& mTagOf;
  const Bytes& mTail;
  QovJbf::RungLadder mLadder;
  bool mOpen = false;
  Bytes mBody;
};

template <class T, class TagOf>
Bytes EncodeForeign(const T& record, const TagOf& tagOf, const Bytes& tail = {}) {
  return ForeignWriter<TagOf>(tagOf, tail, "").Write(record);
}

}  // namespace Qov::Test
