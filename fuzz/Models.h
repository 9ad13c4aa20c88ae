#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "Qov/Ryx/Tree.h"

namespace Qov::Fuzz {

using Bytes = std::span<const std::uint8_t>;

/// Two files in one input: length of the first: u32 | first | second.
struct FilePair {
  Bytes mFirst;
  Bytes mSecond;
};
FilePair SplitPair(Bytes bytes);

/// Loads a whole model. Raises what loading raises.
void Load(QovRyx::Tree& tree, const std::string& path);

/// Reads the arrays that a loaded model does not share with others, and its node sets, and checks
/// the blocks that they end in the middle of. False if they are too many bytes for one run: a few
/// hundred bytes of a file may stand for many megabytes.
bool ReadArrays(const QovRyx::Tree& tree);

/// All that is in a model, to be compared with another one's; nothing if it is too much for one
/// run, as above, results that share their values counted one by one.
std::optional<std::string> Describe(const QovRyx::Tree& tree);

}  // namespace Qov::Fuzz
