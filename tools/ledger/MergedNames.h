#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "MergeRequest.h"
#include "Qov/Ryx/Geometry.h"

namespace Qov::Tools {

/// What an instance merge calls the results of one geometry.
struct MergedNames {
  std::vector<std::string> mNames;  ///< By position.
  /// The names under which other instances of the file share a result, by its own name.
  std::map<std::string, std::vector<std::string>> mShared;
};

/// Worked out from the rules, not with the merge's own functions: this is what a merge is checked
/// against. `fileNumber` counts from 1.
MergedNames NameResults(const QovRyx::Geometry& geometry, std::size_t fileNumber, MergeMode mode);

/// What stands behind the last separator; empty if there is none.
std::string InstancePartOf(const std::string& name);

}  // namespace Qov::Tools
