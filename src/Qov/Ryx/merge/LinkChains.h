#pragma once

#include <cstdint>
#include <unordered_map>

#include "LinkForest.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Finds the results on chains of links while results are being linked anew. Each link is followed
/// once, even if several chains contain it.
class LinkChains {
 public:
  explicit LinkChains(const NodeTree& nodes) : mNodes(nodes) {}

  /// Returns true if `place` is `start` or is on the chain of links from `start`.
  bool LeadsTo(const Geometry::Link& start, const Geometry::Link& place) {
    const LinkForest::Vertex from = Enter(start);
    return mForest.Reaches(from, Enter(place));
  }

  /// Records the new link of the result at `place`.
  void NoteNewLink(const Geometry::Link& place) {
    const auto found = mVertices.find(KeyOf(place));
    if (found == mVertices.end()) return;
    const LinkForest::Vertex vertex = found->second;
    mForest.Detach(vertex);
    if (const Geometry::VarStruct* result = FindLinked(place)) {
      const LinkForest::Vertex next = Enter(result->mLink);
      if (!mForest.Reaches(next, vertex)) mForest.Attach(vertex, next);
    }
  }

 private:
  static std::uint64_t KeyOf(const Geometry::Link& place) {
    return std::uint64_t{place.mNode} << 32 | place.mVariable;
  }

  const Geometry::VarStruct* FindLinked(const Geometry::Link& place) const {
    const Geometry::VarStruct* result = FindVariable(mNodes, place);
    return result != nullptr && result->mLinked && !result->mLeadsNowhere ? result : nullptr;
  }

  /// Returns the vertex of a place. Enters a new place with its chain, up to the first known place.
  /// Leaves out the link that closes a cycle.
  LinkForest::Vertex Enter(Geometry::Link place) {
    const auto [first, isFirstNew] = mVertices.try_emplace(KeyOf(place), LinkForest::kNone);
    if (!isFirstNew) return first->second;
    const LinkForest::Vertex start = first->second = mForest.Add();
    LinkForest::Vertex below = start;
    while (const Geometry::VarStruct* result = FindLinked(place)) {
      place = result->mLink;
      const auto [known, isNew] = mVertices.try_emplace(KeyOf(place), LinkForest::kNone);
      if (isNew) known->second = mForest.Add();
      if (isNew || known->second < start) mForest.Attach(below, known->second);
      if (!isNew) break;
      below = known->second;
    }
    return start;
  }

  const NodeTree& mNodes;
  std::unordered_map<std::uint64_t, LinkForest::Vertex> mVertices;
  LinkForest mForest;
};

}  // namespace QovRyx
