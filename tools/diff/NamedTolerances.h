#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "compare/Tolerance.h"

namespace Qov::Tools {

/// A tolerance for the results whose names match a pattern: a name as ryx shows it, on a terminal
/// or in a pipe, or the same without the instance part. The pattern may contain *, ? and [...].
struct NamedTolerance {
  std::string mPattern;
  Tolerance mTolerance;
  bool mIsFromFile = false;
};

/// Reads "PATTERN:abs=0.5,rel=1e-6,ulp=4", any of the three limits left out. Raises
/// MiscellaneousError for anything else.
NamedTolerance ParseNamedTolerance(const std::string& text);

/// Reads a file with such a text on each line. Empty lines and lines that begin with # are left
/// out. Raises ReadError, or MiscellaneousError with the number of the line.
std::vector<NamedTolerance> ReadNamedTolerances(const std::string& path);

/// Reads a number into `value`. Returns true if it is finite and not negative.
bool ParseMagnitude(std::string_view text, double& value);

/// The default tolerance and those of named results.
class Tolerances {
 public:
  /// Returns the tolerances whose patterns match none of the names.
  std::vector<const NamedTolerance*> FindUnused(const std::set<std::string>& names) const;
  void SetDefault(const Tolerance& tolerance) { mDefault = tolerance; }
  void Add(NamedTolerance tolerance) { mNamed.push_back(std::move(tolerance)); }

  /// Returns the last tolerance whose pattern matches, else the default; null to compare bit for
  /// bit.
  const Tolerance* Find(const std::string& name) const;

 private:
  std::optional<Tolerance> mDefault;
  std::vector<NamedTolerance> mNamed;
};

}  // namespace Qov::Tools
