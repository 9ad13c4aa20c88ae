#pragma once

#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include "ExpectedModel.h"
#include "merge/LinkForest.h"

namespace Qov::Tools {

/// Finds the places on chains of links in an expected model while results are shared.
class ExpectedChains {
 public:
  using Place = QovRyx::Geometry::Link;

  explicit ExpectedChains(ExpectedModel& model) : mModel(model) {}

  /// Returns true if `place` is `start` or is on the chain from `start`.
  bool LeadsTo(const Place& start, const Place& place) {
    const Vertex from = Find(start);
    return mForest.Reaches(from, Find(place));
  }

  /// Updates the chains after the link of the result at `place` was changed.
  void Update(const Place& place) {
    const auto known = mVertices.find({place.mNode, place.mVariable});
    if (known == mVertices.end()) return;
    const Vertex vertex = known->second;
    mForest.Detach(vertex);
    const ExpectedResult* result = mModel.FindResult(place);
    if (result == nullptr || !result->mLinked || result->mLeadsNowhere) return;
    const Vertex next = Find(result->mLink);
    if (!mForest.Reaches(next, vertex)) mForest.Attach(vertex, next);
  }

 private:
  using Vertex = QovRyx::LinkForest::Vertex;

  Vertex Find(Place place) {
    std::vector<Vertex> chain;  // places that nothing led to so far, and the known one at the end
    const ExpectedResult* result = nullptr;
    do {
      const auto [known, isNew] = mVertices.try_emplace({place.mNode, place.mVariable});
      if (!isNew) {
        const bool isCircle = !chain.empty() && known->second >= chain.front();
        if (!isCircle) chain.push_back(known->second);
        break;
      }
      chain.push_back(known->second = mForest.Add());
      result = mModel.FindResult(place);
      if (result != nullptr) place = result->mLink;
    } while (result != nullptr && result->mLinked && !result->mLeadsNowhere);
    for (std::size_t i = 1; i < chain.size(); ++i) mForest.Attach(chain[i - 1], chain[i]);
    return chain.front();
  }

  ExpectedModel& mModel;
  std::map<std::pair<std::uint32_t, std::uint32_t>, Vertex> mVertices;
  QovRyx::LinkForest mForest;
};

}  // namespace Qov::Tools
