#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "Qov/Jbf/IndexItem.h"

/// The constants of the container format. The layout of a file, all numbers little-endian:
///
///   magic: 8 bytes
///   version: 4 bytes            text with a zero byte at its end
///   root index length: u32
///   root index                  an item list of 20 items
///   blocks                      in the order of their items, without gaps
///
/// An item list is a count (u32) and that many items. A compressed block is the length of its
/// content (u32) and a zlib stream. IndexItem.cpp draws an item.
namespace QovJbf {

inline constexpr std::array<unsigned char, 8> kMagic = {0x89, 'J',  'B',  'F',
                                                        '\r', '\n', 0x1A, '\n'};
inline constexpr std::uint64_t kVersionPosition = kMagic.size();
inline constexpr std::uint64_t kVersionSize = 4;
inline constexpr std::uint64_t kHeaderSize = kVersionPosition + kVersionSize;
/// Position of the root index, which begins with its length.
inline constexpr std::uint64_t kRootPosition = kHeaderSize;

inline constexpr std::uint64_t kRootLengthSize = sizeof(std::uint32_t);
inline constexpr std::uint64_t kCountSize = sizeof(std::uint32_t);
/// Size of the length at the start of a compressed block.
inline constexpr std::uint64_t kRawLengthSize = sizeof(std::uint32_t);

/// Returns the largest size of the content of a zlib stream of `numBytes` bytes. Deflate encodes at
/// most 258 bytes in two bits; the constant covers the ends of a very short stream.
constexpr std::uint64_t GetLargestContent(std::uint64_t numBytes) { return numBytes * 1032 + 64; }

/// Number of items in the root index.
inline constexpr std::uint32_t kRootItems = 20;
/// Number of items in an index block. They are the items after its own.
inline constexpr std::uint32_t kBlockItems = 200;
/// Returns the size of an item list.
constexpr std::uint64_t GetItemListSize(std::uint64_t numItems) {
  return kCountSize + numItems * IndexItem::kEncodedSize;
}

/// Names of streams that begin so belong to the container.
inline constexpr char kReservedMark = '\v';
inline constexpr const char* kEmptyBlockName = "\vEmpty Block ";
inline constexpr const char* kIndexBlockName = "\vIndex Block ";

inline bool IsReservedName(std::string_view name) { return name.starts_with(kReservedMark); }
inline bool IsEmptyBlockName(std::string_view name) { return name.starts_with(kEmptyBlockName); }
inline bool IsIndexBlockName(std::string_view name) { return name.starts_with(kIndexBlockName); }

inline constexpr std::uint8_t kKnownBlockFlags =
    BlockFlag::kCompressed | BlockFlag::kFreezeWhenFull;

/// Largest size of a block, in memory and in a file.
inline constexpr std::uint32_t kLargestBlock = std::numeric_limits<std::uint32_t>::max();
/// Size at which a stream gets its next block if the environment does not set another.
inline constexpr std::uint32_t kDefaultBlockLimit = 200U << 20;

/// The last container version whose tree records hold 32-bit offsets.
inline constexpr const char* kLastVersionWithNarrowOffsets = "0.6";

/// Returns ten times the number that a version text begins with: 13 for "1.3". Returns 0 for text
/// that is not a number and for negative numbers.
std::uint32_t GetVersionNumber(const std::string& version);

/// Returns true if views in files of this container version can be read.
bool HasViews(std::string_view version);
/// Returns true if versioned records in files of this container version begin with their size.
bool HasRecordSizes(std::string_view version);
/// Returns true if tree records in files of this container version hold 64-bit offsets.
bool HasWideOffsets(const std::string& version);

}  // namespace QovJbf
