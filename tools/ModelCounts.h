#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Numbers of the parts of a model. Reads no array.
struct ModelCounts {
  explicit ModelCounts(const QovRyx::NodeTree& nodes);

  std::uint64_t GetNumNodes() const;

  /// By type; entries without content have the empty type.
  std::map<std::string, std::uint64_t> mNodes;
  std::uint64_t mNumResults = 0;  ///< All arrays of all geometries.
  std::uint64_t mNumLinked = 0;   ///< Results that share the values of others.
  std::uint64_t mNumLost = 0;     ///< Linked results without values.
  std::uint64_t mNumValues = 0;   ///< Elements of all results that are not linked.
  std::uint64_t mNumSets = 0;     ///< Node sets.
  /// The instance parts of all results: load cases, time steps.
  std::set<std::string> mInstances;

 private:
  void CountResults(const QovRyx::NodeTree& nodes, const QovRyx::Geometry& geometry);
};

}  // namespace Qov::Tools
