#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Finds the variable that a link leads to in the end, along chains of links. Each variable is
/// visited once, however many links lead over it.
class LinkResolver {
 public:
  explicit LinkResolver(const NodeTree& nodes) : mNodes(nodes) {}

  /// Null if the link leads nowhere or round in a circle.
  const Geometry::VarStruct* Resolve(const Geometry::Link& link) {
    std::vector<std::uint64_t> path;
    const Geometry::VarStruct* target = Follow(link, path);
    for (const std::uint64_t key : path) mTargets[key] = target;
    return target;
  }

 private:
  const Geometry::VarStruct* Follow(Geometry::Link link, std::vector<std::uint64_t>& path) {
    while (const Geometry::VarStruct* variable = FindVariable(mNodes, link)) {
      if (!variable->mLinked) return variable;
      if (variable->mLeadsNowhere) return nullptr;
      const std::uint64_t key = std::uint64_t{link.mNode} << 32 | link.mVariable;
      const auto [known, isNew] = mTargets.try_emplace(key, nullptr);
      if (!isNew) return known->second;  // still null if this path came by here: a circle
      path.push_back(key);
      link = variable->mLink;
    }
    return nullptr;
  }

  const NodeTree& mNodes;
  /// Of linked variables, by (node, position): the variable whose values they share.
  std::unordered_map<std::uint64_t, const Geometry::VarStruct*> mTargets;
};

}  // namespace QovRyx
