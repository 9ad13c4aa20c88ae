#include "Qov/Jbf/IndexItem.h"

#include <algorithm>
#include <array>
#include <cstring>

// id: u8
// name length: u32    written as 128; any length is read
// name: 128 bytes     padded with zeros; a name of 128 bytes has no terminator
// size: u32
// flags: u8
// flags2: u8
namespace QovJbf {

void CopyToBlock(Block& block, const IndexItem& item) {
  std::array<char, IndexItem::NameLength> name{};
  item.mName.copy(name.data(), std::min(name.size(), std::strlen(item.mName.c_str())));
  CopyToBlock(block, item.mId);
  CopyToBlock(block, IndexItem::NameLength);
  block.Put(name.data(), IndexItem::NameLength);
  CopyToBlock(block, item.mSize);
  CopyToBlock(block, item.mFlags);
  CopyToBlock(block, item.mFlags2);
}

void CopyFromBlock(Block& block, IndexItem& item) {
  item = IndexItem();
  CopyFromBlock(block, item.mId);
  CopyFromBlock(block, item.mName);
  CopyFromBlock(block, item.mSize);
  CopyFromBlock(block, item.mFlags);
  CopyFromBlock(block, item.mFlags2);
}

}  // namespace QovJbf
