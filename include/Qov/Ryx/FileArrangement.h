#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Qov/Export.h"

namespace QovRyx {

/// The parts of a path by which paths are ordered: the text before ".ryx" and the digits at its
/// end.
struct QOV_EXPORT NameTokens {
  NameTokens(const std::string& path, std::uint64_t position);

  /// Compares the numbers of paths that differ in nothing else, and the positions of other paths.
  /// This is not a strict weak ordering if both kinds of paths are mixed.
  bool operator<(const NameTokens& other) const;

  std::string mFullName;
  std::string mExtension;
  std::string mStem;
  std::string mNumberText;
  std::uint64_t mNumber;
  std::uint64_t mPosition;
};

/// Returns the paths in the order of their trailing numbers: run2, run10, run1 become run1, run2,
/// run10.
QOV_EXPORT std::vector<std::string> arrange_files(const std::vector<std::string>& paths);

}  // namespace QovRyx
