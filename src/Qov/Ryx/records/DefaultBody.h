#pragma once

#include <cstdint>
#include <vector>

#include "Qov/Ryx/BlockVersionedIo.h"

namespace QovRyx {

/// The body of a default-constructed opaque record: its default members, one after the other.
/// Encoded once a combination, because every view point that is made needs some of these.
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
