#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Qov/Ryx/BlockVersionedIo.h"
#include "Qov/Util/Exception.h"

/// Records as bytes, for tests that look at the bytes or damage them.
namespace Qov::Test {

using Bytes = std::vector<std::uint8_t>;
using ErrorType = Util::Exception::ErrorType;

/// "0a 0B..." with any white space.
inline Bytes FromHex(std::string_view text) {
  Bytes bytes;
  std::string digits;
  for (const char c : text) {
    if (c == ' ' || c == '\n') continue;
    digits += c;
    if (digits.size() < 2) continue;
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits, nullptr, 16)));
    digits.clear();
  }
  return bytes;
}

inline Bytes Content(const QovJbf::Block& block) {
  return Bytes(block.GetData(), block.GetData() + block.GetSize());
}

inline QovJbf::Block MakeBlock(const Bytes& bytes) {
  QovJbf::Block block;
  block.AllocateAdditionalMemory(bytes.size() + 1);  // else every block would take megabytes
  block.Put(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  block.SetPosition(0);
  return block;
}

template <class T>
Bytes Encode(const T& value) {
  QovJbf::Block block;
  CopyToBlock(block, value);
  return Content(block);
}

/// As a writer whose newest version was `tag` wrote the record itself.
template <class T>
Bytes EncodeAs(const T& record, const std::string& tag) {
  QovJbf::Block block;
  QovJbf::FrameWriter frame(block, tag);
  QovJbf::FieldWriter walk(block, tag);
  T::Walk(record, walk);
  frame.Close();
  return Content(block);
}

template <class T>
T Decode(const Bytes& bytes) {
  QovJbf::Block block = MakeBlock(bytes);
  T value;
  CopyFromBlock(block, value);
  return value;
}

/// The kind of error that decoding ends with; InvalidException if it does not fail.
template <class T>
ErrorType DecodingError(const Bytes& bytes) {
  try {
    Decode<T>(bytes);
  } catch (const Util::Exception& error) {
    return error.GetType();
  }
  return ErrorType::InvalidException;
}

inline Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

inline Bytes LittleEndian(std::uint32_t value) {
  return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
          static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
}

/// A record with another size in front.
inline Bytes WithSize(const Bytes& record, std::size_t size) {
  return LittleEndian(static_cast<std::uint32_t>(size)) + Bytes(record.begin() + 4, record.end());
}

/// A whole record of a tag and a body.
inline Bytes MakeRecord(const std::string& tag, const Bytes& body) {
  Bytes text(tag.begin(), tag.end());
  const auto size = static_cast<std::uint32_t>(8 + text.size() + body.size());
  return LittleEndian(size) + LittleEndian(static_cast<std::uint32_t>(text.size())) + text + body;
}

}  // namespace Qov::Test
