#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace Qov::Tools {

/// How far two floats may be apart and still count as equal: it is enough that one of the three
/// limits holds. Under any tolerance all NaNs are equal, and so are the two zeros.
struct Tolerance {
  double mAbsolute = 0.0;
  double mRelative = 0.0;   ///< Times the larger of the two magnitudes.
  std::uint32_t mUlps = 0;  ///< How many floats lie between them, and one.

  bool Accepts(float a, float b) const;
};

/// A tolerance for the results whose names match a pattern: a name as ryx shows it, on a terminal
/// or in a pipe, or the same without the instance part. The pattern may contain *, ? and [...].
struct NamedTolerance {
  std::string mPattern;
  Tolerance mTolerance;
};

/// Reads "PATTERN:abs=0.5,rel=1e-6,ulp=4", any of the three limits left out. Raises
/// MiscellaneousError for anything else.
NamedTolerance ParseNamedTolerance(const std::string& text);

/// Reads a number into `value`. Returns true if it is finite and not negative.
bool ParseMagnitude(std::string_view text, double& value);

/// What holds for which result.
class Tolerances {
 public:
  /// Returns the first pattern that matches none of the names; null if every pattern matches a
  /// name.
  const std::string* FindUnused(const std::set<std::string>& names) const;
  void SetDefault(const Tolerance& tolerance) { mDefault = tolerance; }
  void Add(NamedTolerance tolerance) { mNamed.push_back(std::move(tolerance)); }

  /// The last one whose pattern fits, else the default; null: bit for bit.
  const Tolerance* Find(const std::string& name) const;

 private:
  std::optional<Tolerance> mDefault;
  std::vector<NamedTolerance> mNamed;
};

}  // namespace Qov::Tools
