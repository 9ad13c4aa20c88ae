#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include "Qov/Jbf/Block.h"

/// Blocks from bytes, and bytes of blocks.
namespace Qov::Test {

/// Returns bytes as hex digits.
inline std::string ToHex(const std::string& bytes) {
  static constexpr const char* kDigits = "0123456789abcdef";
  std::string hex;
  for (const char c : bytes) {
    hex += kDigits[static_cast<unsigned char>(c) >> 4];
    hex += kDigits[static_cast<unsigned char>(c) & 15];
  }
  return hex;
}

inline std::string ContentOf(const QovJbf::Block& block) {
  return {reinterpret_cast<const char*>(block.GetData()), block.GetSize()};
}

inline std::string HexOf(const QovJbf::Block& block) { return ToHex(ContentOf(block)); }

inline QovJbf::Block BlockOf(const std::string& bytes) {
  QovJbf::Block block;
  block.AllocateAdditionalMemory(bytes.size() + 1);  // otherwise every block takes 10 MiB
  block.Put(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  block.SetPosition(0);
  return block;
}

/// Returns the bytes of a number as they are in memory.
template <class T>
std::string Image(T value) {
  std::string bytes(sizeof value, '\0');
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

}  // namespace Qov::Test
