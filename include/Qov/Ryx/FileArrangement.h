#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Qov/Export.h"

namespace QovRyx {

/// A path taken apart for ordering: what stands before ".ryx", and the digits at its end.
struct QOV_EXPORT NameTokens {
  NameTokens(const std::string& path, std::uint64_t position);

  /// By number among paths that differ in it only, else by position. Not a strict weak ordering
  /// when the two kinds are mixed.
  bool operator<(const NameTokens& other) const;

  std::string mFullName;
  std::string mExtension;
  std::string mStem;
  std::string mNumberText;
  std::uint64_t mNumber;
  std::uint64_t mPosition;
};

/// The paths in the order of their trailing numbers: run2, run10, run1 become run1, run2, run10.
QOV_EXPORT std::vector<std::string> arrange_files(const std::vector<std::string>& paths);

}  // namespace QovRyx
