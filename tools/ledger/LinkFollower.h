#pragma once

#include <functional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ExpectedModel.h"

namespace Qov::Tools {

/// Finds the result whose values a result has in the end. Each link is looked at once, however
/// many lead over it.
template <class AnyResult>
class LinkFollower {
 public:
  /// Gives the result that a linked one leads to next, or null.
  using Next = std::function<const AnyResult*(const AnyResult&)>;

  explicit LinkFollower(Next next) : mNext(std::move(next)) {}

  /// The result itself if it is not linked; null if its link leads nowhere or in a circle.
  const AnyResult* Follow(const AnyResult& start) {
    std::vector<const AnyResult*> chain;
    const AnyResult* result = &start;
    while (result != nullptr && result->mLinked) {
      const auto [known, isNew] = mEnds.try_emplace(result, nullptr);
      if (!isNew) {  // still null if this chain came by here: a circle
        result = known->second;
        break;
      }
      chain.push_back(result);
      result = mNext(*result);
    }
    for (const AnyResult* link : chain) mEnds[link] = result;
    return result;
  }

 private:
  Next mNext;
  std::unordered_map<const AnyResult*, const AnyResult*> mEnds;
};

inline LinkFollower<Result> FollowLinks(const QovRyx::NodeTree& nodes) {
  return LinkFollower<Result>(
      [&nodes](const Result& result) { return QovRyx::FindVariable(nodes, result.mLink); });
}

inline LinkFollower<ExpectedResult> FollowLinks(ExpectedModel& model) {
  return LinkFollower<ExpectedResult>(
      [&model](const ExpectedResult& result) { return model.FindNext(result); });
}

}  // namespace Qov::Tools
