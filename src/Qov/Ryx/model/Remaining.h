#pragma once

#include <cstdint>

#include "Qov/Jbf/Block.h"

namespace QovRyx {

/// Takes nothing from a stream: tells how many bytes of the current block are still to be read.
/// That is 0 only at the end of the stream.
struct Remaining {
  std::uint32_t mNumBytes = 0;
};

inline void CopyFromBlock(const QovJbf::Block& block, Remaining& remaining) {
  remaining.mNumBytes = block.GetRemaining();
}

}  // namespace QovRyx
