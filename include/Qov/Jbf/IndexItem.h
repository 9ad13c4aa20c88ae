#pragma once

#include <cstdint>
#include <string>

#include "Qov/Export.h"
#include "Qov/Jbf/Block.h"
#include "Qov/Jbf/BlockIo.h"

namespace QovJbf {

/// The bits of IndexItem::mFlags.
namespace BlockFlag {
/// The block is compressed when it is written and decompressed when it is loaded.
inline constexpr std::uint8_t kCompressed = 0x01;
/// The block is written as soon as it is full. Its memory is freed then.
inline constexpr std::uint8_t kFreezeWhenFull = 0x20;
}  // namespace BlockFlag

/// The entry of one block in the index of a container. IndexItem.cpp draws its stored form.
struct IndexItem {
  /// Number of bytes that a file has for the name. Longer names are cut.
  static constexpr std::uint32_t NameLength = 128;
  static constexpr std::uint32_t kEncodedSize = 1 + 4 + NameLength + 4 + 1 + 1;

  std::uint8_t mId = 0;         ///< Creation counter. It has no meaning for readers.
  std::string mName;            ///< Name of the stream that the block belongs to.
  std::uint64_t mPosition = 0;  ///< Offset in the file. It follows from the sizes; not stored.
  std::uint32_t mSize = 0;      ///< Number of bytes in the file.
  std::uint8_t mFlags = 0;      ///< BlockFlag bits.
  std::uint8_t mFlags2 = 0;     ///< Kept as read.
};

QOV_EXPORT void CopyToBlock(Block& block, const IndexItem& item);
/// Resets the position, because it is not stored.
QOV_EXPORT void CopyFromBlock(Block& block, IndexItem& item);
/// The size of an item with an empty name, because readers accept any length of a name.
template <>
inline constexpr std::size_t kLeastEncodedSize<IndexItem> =
    IndexItem::kEncodedSize - IndexItem::NameLength;

}  // namespace QovJbf
