#pragma once

#include <cstdint>
#include <functional>
#include <unordered_map>
#include <utility>

#include "LinkForest.h"
#include "Qov/Ryx/ResultLink.h"

namespace QovRyx {

/// An index of the chains of links that stays usable while results get new links. Each link is
/// followed once, even if several chains contain it.
template <class Result>
class LinkChains {
 public:
  /// Returns the result at a place, or null. `Result` has a ResultLink `mLink`.
  using Find = std::function<const Result*(const ResultPlace&)>;

  explicit LinkChains(Find find) : mFind(std::move(find)) {}

  /// Returns true if `place` is `start` or is on the chain of links from `start`.
  bool LeadsTo(const ResultPlace& start, const ResultPlace& place) {
    const LinkForest::Vertex from = Enter(start);
    return mForest.Reaches(from, Enter(place));
  }

  /// Updates the index after the link of the result at `place` has changed.
  void Update(const ResultPlace& place) {
    const auto found = mVertices.find(KeyOf(place));
    if (found == mVertices.end()) return;
    const LinkForest::Vertex vertex = found->second;
    mForest.Detach(vertex);
    if (const Result* result = FindLinked(place)) {
      const LinkForest::Vertex next = Enter(result->mLink.GetPlace());
      if (!mForest.Reaches(next, vertex)) mForest.Attach(vertex, next);
    }
  }

 private:
  static std::uint64_t KeyOf(const ResultPlace& place) {
    return std::uint64_t{place.mNode} << 32 | place.mPosition;
  }

  const Result* FindLinked(const ResultPlace& place) const {
    const Result* result = mFind(place);
    return result != nullptr && result->mLink.HasTarget() ? result : nullptr;
  }

  /// Returns the vertex of a place. Enters a new place with its chain, up to the first known place.
  /// Leaves out the link that closes a cycle.
  LinkForest::Vertex Enter(ResultPlace place) {
    const auto [first, isFirstNew] = mVertices.try_emplace(KeyOf(place), LinkForest::kNone);
    if (!isFirstNew) return first->second;
    const LinkForest::Vertex start = first->second = mForest.Add();
    LinkForest::Vertex below = start;
    while (const Result* result = FindLinked(place)) {
      place = result->mLink.GetPlace();
      const auto [known, isNew] = mVertices.try_emplace(KeyOf(place), LinkForest::kNone);
      if (isNew) known->second = mForest.Add();
      if (isNew || known->second < start) mForest.Attach(below, known->second);
      if (!isNew) break;
      below = known->second;
    }
    return start;
  }

  Find mFind;
  std::unordered_map<std::uint64_t, LinkForest::Vertex> mVertices;
  LinkForest mForest;
};

}  // namespace QovRyx
