#pragma once

#include <cstdint>
#include <string>

#include "Qov/Ryx/BlockVersionedIo.h"
#include "support/Blocks.h"
#include "support/Errors.h"

/// Records as bytes, for tests that look at the bytes or damage them.
namespace Qov::Test {

using Bytes = std::string;

/// "0a 0B..." with spaces where they help.
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

/// As a writer whose newest version was `tag` wrote the record itself.
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

/// A record with another size in front.
inline Bytes WithSize(const Bytes& record, std::size_t size) {
  return Image(static_cast<std::uint32_t>(size)) + record.substr(4);
}

/// A whole record of a tag and a body.
inline Bytes MakeRecord(const std::string& tag, const Bytes& body) {
  const std::uint32_t length = static_cast<std::uint32_t>(tag.size());
  return Image(static_cast<std::uint32_t>(8 + length + body.size())) + Image(length) + tag + body;
}

}  // namespace Qov::Test
