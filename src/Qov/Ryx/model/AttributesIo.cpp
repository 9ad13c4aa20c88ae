#include "AttributesIo.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>
#include <utility>

#include "ModelFormat.h"
#include "Qov/Util/Raise.h"

// A stored map, in name order:
//   names: vector<string>
//   types: vector<u8>       position of the alternative in AttributeValue
//   u32s: vector<u32>, floats: vector<f32>, doubles: vector<f64>, strings: vector<string>
// Each value is in the column of its type. The column of doubles comes before that of strings,
// although the type index of doubles is higher.

namespace QovUtil {
namespace {

using QovRyx::kCountSize;

/// A column that is written to a block in one piece.
struct WrittenColumn {
  std::string_view mBytes;
};

void CopyToBlock(QovJbf::Block& block, const WrittenColumn& column) {
  if (column.mBytes.size() > std::numeric_limits<std::uint32_t>::max()) {
    Qov::Util::RaiseOutOfMemory("include/Qov/Ryx/AttributesIo");
  }
  block.Put(column.mBytes.data(), static_cast<std::uint32_t>(column.mBytes.size()));
}

/// Reads an empty map if the next bytes of the block are one.
struct EmptyMap {
  bool mIsRead = false;
};

void CopyFromBlock(QovJbf::Block& block, EmptyMap& map) {
  static constexpr std::array<unsigned char, QovRyx::kNumAttributeColumns * kCountSize> kZeros{};
  map.mIsRead =
      block.GetRemaining() >= kZeros.size() &&
      std::memcmp(block.GetData() + block.GetPosition(), kZeros.data(), kZeros.size()) == 0;
  if (map.mIsRead) block.SetPosition(std::uint64_t{block.GetPosition()} + kZeros.size());
}

/// A column that is appended to those before it.
struct ReadColumn {
  std::string& mrBytes;
  std::uint64_t mElementSize;  ///< In bytes; 0 for strings.
};

/// Returns the size in bytes of `count` strings at the cursor.
std::uint64_t MeasureStrings(const QovJbf::Block& block, std::uint32_t count) {
  std::uint64_t length = 0;
  for (; count > 0; --count) {
    QovJbf::Detail::CheckCount(block, length + kCountSize, 1);
    std::uint32_t size = 0;
    std::memcpy(&size, block.GetData() + block.GetPosition() + length, sizeof size);
    length += kCountSize + size;
    QovJbf::Detail::CheckCount(block, length, 1);
  }
  return length;
}

void CopyFromBlock(QovJbf::Block& block, ReadColumn& column) {
  std::uint32_t count = 0;
  QovJbf::CopyFromBlock(block, count);
  const bool isText = column.mElementSize == 0;
  QovJbf::Detail::CheckCount(block, count, isText ? kCountSize : column.mElementSize);
  const std::uint64_t size =
      isText ? MeasureStrings(block, count) : std::uint64_t{count} * column.mElementSize;
  column.mrBytes.append(reinterpret_cast<const char*>(&count), sizeof count);
  if (size == 0) return;
  const std::size_t end = column.mrBytes.size();
  column.mrBytes.resize(end + size);
  block.Get(column.mrBytes.data() + end, static_cast<std::uint32_t>(size));
}

}  // namespace

void WriteAttributesToJbf(QovJbf::JbFile& file, const std::string& key,
                          const Attributes& attributes) {
  for (const std::string_view column : attributes.GetColumns()) {
    file.GetIndex().Put(key, WrittenColumn{column});
  }
}

void ReadAttributesFromJbf(QovJbf::JbFile& file, const std::string& key, Attributes& attributes) {
  attributes = {};
  EmptyMap empty;
  file.Require(key, empty);
  if (empty.mIsRead) return;
  std::string columns;
  const auto append = [&](std::uint64_t elementSize) {
    ReadColumn column{columns, elementSize};
    file.Require(key, column);
  };
  append(0);  // the names
  append(1);  // the types
  for (const QovRyx::AttributeType type : QovRyx::kValueColumns) {
    append(QovRyx::GetValueSize(type));
  }
  attributes = Attributes::FromColumns(std::move(columns));
}

void ReadAttributesFromJbf(QovJbf::JbFile& file, const std::string& key, AttributeMap& attributes) {
  Attributes read;
  ReadAttributesFromJbf(file, key, read);
  attributes.merge(AttributeMap(read));
}

}  // namespace QovUtil
