#pragma once

#include <string>
#include <vector>

namespace QovRyx {

/// Chooses a part of a model by names.
///
/// A word of a list fits a name that is equal to it, and a name that matches it as a pattern with
/// *, ? and [...]; the last two match one byte. An item is chosen if a word of the list of its kind
/// fits it, or if that list is empty, and if no word of the `Without` list of its kind fits it.
///
/// A selection that fits nothing raises ElementNotFound: a list without `Without` of which no word
/// fits anything, or a selection that leaves the root only. A single word that fits nothing is
/// noted.
struct Selection {
  /// Names of nodes, including NodeSets nodes. A number also fits the node of that tree id. A
  /// chosen node brings its ancestors and everything below it; a node that is left out takes
  /// everything below it along. The root is never left out.
  std::vector<std::string> mNodes{};
  std::vector<std::string> mWithoutNodes{};
  /// Base names of results, and their whole names. Mesh arrays (coordinates, connectivity,
  /// polylengths, ids), by which geometries are drawn, are chosen by every list. Only a word of
  /// mWithoutResults that is equal to the name of a mesh array leaves it out.
  std::vector<std::string> mResults{};
  std::vector<std::string> mWithoutResults{};
  /// Instance parts of names, also of mesh arrays. Results without an instance part belong to every
  /// instance: these lists do not leave them out.
  std::vector<std::string> mInstances{};
  std::vector<std::string> mWithoutInstances{};

  bool ChoosesAll() const {
    return mNodes.empty() && mWithoutNodes.empty() && mResults.empty() && mWithoutResults.empty() &&
           mInstances.empty() && mWithoutInstances.empty();
  }
};

}  // namespace QovRyx
