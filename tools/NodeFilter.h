#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
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
  /// Patterns for MatchesResult. The node is a geometry with a result that matches one of them.
  std::vector<std::string> mResults;
  std::optional<std::uint32_t> mDepth;  ///< The node is on one of the first levels; 1 is the top.

  /// Returns true if nodes are chosen by more than their depth.
  bool ChoosesNodes() const {
    return !mIds.empty() || mName || !mType.empty() || !mResults.empty();
  }
  bool Accept(const QovRyx::NodeTree::Node& entry) const;
  /// Returns true if a result of that name is shown.
  bool AcceptsResult(const std::string& name) const;
};

/// The nodes of a model that are shown: those that meet the criteria, and their ancestors.
class NodeFilter {
 public:
  /// The criteria must exist as long as this object.
  NodeFilter(const QovRyx::NodeTree& nodes, const NodeCriteria& criteria);

  /// Returns true if the node is shown with its content.
  bool IsChosen(std::uint32_t id) const { return !mChosen || mChosen->contains(id); }
  /// Returns true if results of that name are shown.
  bool ShowsResult(const std::string& name) const { return mCriteria.AcceptsResult(name); }
  /// Returns the number of nodes below the node that only their depth hides.
  std::uint64_t CountDeeper(std::uint32_t id) const;
  /// Returns the shown nodes, for a TreeWalk; null for all of them.
  const TreeWalk::Ids* GetShown() const { return mShown ? &*mShown : nullptr; }
  /// Returns true if nodes are chosen by more than their depth.
  bool IsActive() const { return mCriteria.ChoosesNodes(); }
  /// Returns true if only some results of a geometry are shown.
  bool ChoosesResults() const { return !mCriteria.mResults.empty(); }
  /// Returns true if no node meets the criteria.
  bool IsEmpty() const { return mChosen && mChosen->empty(); }

 private:
  void Show(const std::vector<std::uint32_t>& path);

  const NodeCriteria& mCriteria;
  // Nothing if every node is shown.
  std::optional<TreeWalk::Ids> mChosen;
  std::optional<TreeWalk::Ids> mShown;
  /// By the id of a node on the last shown level.
  std::unordered_map<std::uint32_t, std::uint64_t> mNumDeeper;
};

}  // namespace Qov::Tools
