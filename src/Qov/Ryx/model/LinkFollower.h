#pragma once

#include <functional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Follows chains of links to the results that have the values.
///
/// Stores each link to another link once, however many chains contain it. The results must keep
/// their addresses and their links while the follower exists. `Result` has a ResultLink `mLink`.
template <class Result>
class LinkFollower {
 public:
  /// Returns the result that is the target of a linked result, or null.
  using Step = std::function<const Result*(const Result&)>;

  explicit LinkFollower(Step step) : mStep(std::move(step)) {}

  /// Returns the last result of the chain that begins with `start`: one that is not linked, or one
  /// whose link has no target. Returns null if the chain is a cycle or leads into one.
  const Result* FindEnd(const Result& start) {
    std::vector<const Result*> chain;
    const Result* end = &start;
    while (end->mLink.IsLinked()) {
      const Result* next = mStep(*end);
      if (next == nullptr) break;
      if (!next->mLink.IsLinked()) {  // not stored, because most chains end here
        end = next;
        break;
      }
      const auto [known, isNew] = mEnds.try_emplace(end, nullptr);
      if (!isNew) {
        end = known->second;  // null if this chain contains the result: a cycle
        break;
      }
      chain.push_back(end);
      end = next;
    }
    for (const Result* result : chain) mEnds[result] = end;
    return end;
  }

  /// Returns the result whose values `start` has: `start` itself if it is not linked. Returns null
  /// if the chain ends at a dangling link or is a cycle.
  const Result* FindOwner(const Result& start) {
    const Result* end = FindEnd(start);
    return end == nullptr || end->mLink.IsLinked() ? nullptr : end;
  }

 private:
  Step mStep;
  /// The ends of the chains that begin with results linked to linked results; null for cycles.
  std::unordered_map<const Result*, const Result*> mEnds;
};

/// Returns a follower of the links of a model, which must exist as long.
inline LinkFollower<Geometry::VarStruct> FollowLinks(const NodeTree& nodes) {
  using Result = Geometry::VarStruct;
  return LinkFollower<Result>(
      [&nodes](const Result& result) { return FindTarget(nodes, result.mLink); });
}

}  // namespace QovRyx
