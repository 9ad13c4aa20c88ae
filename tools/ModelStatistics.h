#pragma once

#include <string>
#include <unordered_map>

#include "ArrayStatistics.h"
#include "NodeFilter.h"
#include "Qov/Ryx/Tree.h"
#include "Terminal.h"

namespace Qov::Tools {

/// The statistics of the arrays of a loaded model that are shown and lie in its file, each read
/// once, one at a time, in the order in which they are stored.
class ModelStatistics {
 public:
  struct Entry {
    ArrayStatistics mStatistics;
    bool mIntegers = false;
    std::string mError;  ///< Why the array could not be read; empty if it could.
  };

  /// Errors are escaped for `style`.
  ModelStatistics(const QovRyx::NodeTree& nodes, const NodeFilter& filter, const TextStyle& style);

  /// Null for an array that has no values in a file. Linked variables share the entry of the one
  /// whose values they take.
  const Entry* Find(const QovRyx::NumericArray& array) const;

 private:
  std::unordered_map<const QovRyx::DataLoader*, Entry> mEntries;
};

}  // namespace Qov::Tools
