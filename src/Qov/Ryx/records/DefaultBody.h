#pragma once

#include <cstdint>
#include <vector>

#include "Qov/Ryx/BlockVersionedIo.h"

namespace QovRyx {

/// Returns the body of a default-constructed opaque record: its default members in order. Encodes
/// each combination once, because every new view point needs some of them.
template <class... Members>
const std::vector<std::uint8_t>& DefaultBody() {
  static const std::vector<std::uint8_t> body = [] {
    QovJbf::Block block;
    (CopyToBlock(block, Members()), ...);
    return std::vector<std::uint8_t>(block.GetData(), block.GetData() + block.GetSize());
  }();
  return body;
}

}  // namespace QovRyx
