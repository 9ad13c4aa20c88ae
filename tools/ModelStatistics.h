#pragma once

#include <string>
#include <unordered_map>

#include "ArrayStatistics.h"
#include "NodeFilter.h"
#include "Qov/Ryx/Tree.h"
#include "Terminal.h"
#include "container/ReadAhead.h"

namespace Qov::Tools {

/// Statistics of the shown arrays of a model that are in its file. Reads each array once, one at a
/// time, in stored order.
class ModelStatistics {
 public:
  struct Entry {
    ArrayStatistics mStatistics;
    bool mIntegers = false;
    std::string mError;  ///< The reason why the array cannot be read, or empty.
  };

  /// Returns the arrays that the constructor reads, in the order of reading.
  static QovJbf::ReadAhead::Parts PlanReads(const QovRyx::NodeTree& nodes,
                                            const NodeFilter& filter);
  /// Errors are escaped for `style`.
  ModelStatistics(const QovRyx::NodeTree& nodes, const NodeFilter& filter, const TextStyle& style);

  /// Returns null for an array without values in a file. A linked result has the entry of the
  /// result with its values.
  const Entry* Find(const QovRyx::NumericArray& array) const;

 private:
  std::unordered_map<const QovRyx::DataLoader*, Entry> mEntries;
};

}  // namespace Qov::Tools
