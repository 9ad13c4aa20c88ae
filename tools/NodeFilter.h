#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Qov/Ryx/Tree.h"
#include "TreeWalk.h"

namespace Qov::Tools {

/// Returns true if a name, as shown in a pipe, matches a pattern with *, ? and [...]. The last two
/// match one byte.
bool MatchesPattern(const std::string& name, const std::string& pattern);

/// Criteria for the nodes to show. A node must meet all that are given.
struct NodeCriteria {
  std::vector<std::uint32_t> mIds;   ///< The node has one of them.
  std::optional<std::string> mName;  ///< A pattern for MatchesPattern.
  std::string mType;

  bool IsEmpty() const { return mIds.empty() && !mName && mType.empty(); }
  bool Accept(const QovRyx::NodeTree::Node& entry) const;
};

/// The nodes of a model that are shown: those that meet the criteria, and their ancestors.
class NodeFilter {
 public:
  NodeFilter(const QovRyx::NodeTree& nodes, const NodeCriteria& criteria);

  /// Returns true if the node is shown with its content.
  bool IsChosen(std::uint32_t id) const { return !mChosen || mChosen->contains(id); }
  /// Returns the shown nodes, for a TreeWalk; null for all of them.
  const TreeWalk::Ids* GetShown() const { return mShown ? &*mShown : nullptr; }
  /// Returns true if there are criteria.
  bool IsActive() const { return mChosen.has_value(); }
  /// Returns true if no node meets the criteria.
  bool IsEmpty() const { return mChosen && mChosen->empty(); }

 private:
  // Nothing if every node is shown.
  std::optional<TreeWalk::Ids> mChosen;
  std::optional<TreeWalk::Ids> mShown;
};

}  // namespace Qov::Tools
