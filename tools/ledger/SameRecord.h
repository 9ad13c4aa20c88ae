#pragma once

#include <cstdint>
#include <cstring>

#include "Qov/Ryx/BlockVersionedIo.h"

namespace Qov::Tools {

/// Whether two records are written as the same bytes: unlike ==, this tells NaN from NaN and one
/// zero from the other.
template <class Record>
bool IsSameRecord(const Record& left, const Record& right) {
  constexpr std::uint64_t kUsualSize = 4096;
  QovJbf::Block leftBlock;
  QovJbf::Block rightBlock;
  leftBlock.AllocateAdditionalMemory(kUsualSize);
  rightBlock.AllocateAdditionalMemory(kUsualSize);
  QovJbf::CopyToBlock_Versioned(leftBlock, left);
  QovJbf::CopyToBlock_Versioned(rightBlock, right);
  return leftBlock.GetSize() == rightBlock.GetSize() &&
         std::memcmp(leftBlock.GetData(), rightBlock.GetData(), leftBlock.GetSize()) == 0;
}

}  // namespace Qov::Tools
