#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Qov/Ryx/Tree.h"
#include "TreeWalk.h"

namespace Qov::Tools {

/// Whether a name, as it is shown in a pipe, fits a pattern with *, ? and [...], of which the last
/// two stand for a byte.
bool MatchesPattern(const std::string& name, const std::string& pattern);

/// What nodes have to be like to be shown. All that is given has to hold.
struct NodeCriteria {
  std::vector<std::uint32_t> mIds;   ///< One of them.
  std::optional<std::string> mName;  ///< A pattern, as MatchesPattern takes it.
  std::string mType;

  bool IsEmpty() const { return mIds.empty() && !mName && mType.empty(); }
  bool Accept(const QovRyx::NodeTree::Node& entry) const;
};

/// The nodes of a model that are shown: those that meet the criteria, and those above them.
class NodeFilter {
 public:
  NodeFilter(const QovRyx::NodeTree& nodes, const NodeCriteria& criteria);

  /// Whether the node is shown with what it holds.
  bool IsChosen(std::uint32_t id) const { return !mChosen || mChosen->contains(id); }
  /// The nodes that are shown at all, for a TreeWalk; null for all of them.
  const TreeWalk::Ids* GetShown() const { return mShown ? &*mShown : nullptr; }
  /// Whether criteria were given, and whether they left anything.
  bool IsActive() const { return mChosen.has_value(); }
  bool IsEmpty() const { return mChosen && mChosen->empty(); }

 private:
  // Nothing if every node is shown.
  std::optional<TreeWalk::Ids> mChosen;
  std::optional<TreeWalk::Ids> mShown;
};

}  // namespace Qov::Tools
