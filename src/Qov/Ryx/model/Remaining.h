#pragma once

#include <cstdint>

#include "Qov/Jbf/Block.h"

namespace QovRyx {

/// The number of unread bytes of the current block of a stream. Reading it consumes nothing. It is
/// 0 only at the end of the stream.
struct Remaining {
  std::uint32_t mNumBytes = 0;
};

inline void CopyFromBlock(const QovJbf::Block& block, Remaining& remaining) {
  remaining.mNumBytes = block.GetRemaining();
}

}  // namespace QovRyx
