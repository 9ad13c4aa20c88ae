#pragma once

#include <string>

namespace QovRyx {

/// The newest version of a geometry record whose layout is known.
inline constexpr const char* kNewestGeometryVersion = "0.7";

/// Returns true if `version` has a higher number than `known`. The numbers before and after the
/// point count as whole numbers, in every locale: "0.10" is newer than "0.7". A text that does not
/// begin with two such numbers is not newer.
bool IsNewerVersion(const std::string& version, const std::string& known);

/// Returns true for a version after kNewestGeometryVersion, because its layout is unknown.
bool IsNewerGeometryVersion(const std::string& version);

}  // namespace QovRyx
