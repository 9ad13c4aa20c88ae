#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "Qov/Ryx/Tree.h"

namespace Qov::Fuzz {

using Bytes = std::span<const std::uint8_t>;

/// Two files in one input:
///   length of the first: u32
///   first file
///   second file
struct FilePair {
  Bytes mFirst;
  Bytes mSecond;
};
FilePair SplitPair(Bytes bytes);

/// Loads a complete model. Raises the errors of Tree::Load.
void Load(QovRyx::Tree& tree, const std::string& path);

/// Reads and verifies the node sets and the arrays that are not linked. Returns false if the arrays
/// take more than 16 MiB, because a few hundred bytes may decompress to many megabytes.
bool ReadArrays(const QovRyx::Tree& tree);

/// Does both. Returns false for a model that is refused or too large.
bool LoadWithArrays(QovRyx::Tree& tree, const std::string& path);

/// Describes a model completely, for comparisons. Returns nothing if its arrays, linked ones
/// included, take more than 16 MiB.
std::optional<std::string> Describe(const QovRyx::Tree& tree);

}  // namespace Qov::Fuzz
