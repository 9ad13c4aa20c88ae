#pragma once

#include <string>
#include <vector>

namespace QovRyx {

/// Chooses a part of a model by patterns with *, ? and [...], where [...] matches one byte.
///
/// An item is chosen if it matches one of the patterns of its kind, or if there are none, and if it
/// matches no pattern of the `Without` list of its kind. A pattern that is a number also matches
/// the node of that tree id.
struct Selection {
  /// A chosen node brings its ancestors and everything below it.
  std::vector<std::string> mNodes;
  std::vector<std::string> mWithoutNodes;
  /// Patterns for the base names of results, and for their whole names.
  std::vector<std::string> mResults;
  std::vector<std::string> mWithoutResults;
  /// Patterns for the instance parts of names. Results without an instance part belong to every
  /// instance: only a pattern for results leaves them out.
  std::vector<std::string> mInstances;
  std::vector<std::string> mWithoutInstances;

  bool ChoosesAll() const {
    return mNodes.empty() && mWithoutNodes.empty() && mResults.empty() && mWithoutResults.empty() &&
           mInstances.empty() && mWithoutInstances.empty();
  }
};

}  // namespace QovRyx
