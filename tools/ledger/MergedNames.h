#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "MergeRequest.h"
#include "Qov/Ryx/Geometry.h"

namespace Qov::Tools {

/// The names that an instance merge gives to the results of one geometry.
struct MergedNames {
  std::vector<std::string> mNames;  ///< By position.
  /// For the name of a shared result: the names under which other instances share it.
  std::map<std::string, std::vector<std::string>> mShared;
};

/// Returns the names by the rules of the merge. They are written independently of the merge,
/// because they check it. `fileNumber` counts from 1.
MergedNames NameResults(const QovRyx::Geometry& geometry, std::size_t fileNumber, MergeMode mode);

/// Returns the text after the last separator; empty if there is none.
std::string InstancePartOf(const std::string& name);

}  // namespace Qov::Tools
