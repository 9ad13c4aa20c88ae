#include "Qov/Ryx/ModelEdits.h"

#include <cstddef>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "LinkFollower.h"
#include "Qov/Util/Raise.h"

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/ModelEdits";

using Result = Geometry::VarStruct;

/// The new place of each result, or nothing for those that are removed.
class NewPlaces {
 public:
  NewPlaces(const NodeTree& nodes, const std::set<std::uint32_t>& removedIds,
            const ResultPredicate& isRemoved) {
    ForEachGeometry(nodes, [&](std::uint32_t id, const Geometry& geometry) {
      if (removedIds.contains(id)) {
        mNumRemoved += geometry.GetVariables().size();
        return;
      }
      Positions& positions = mGeometries[id];
      positions.mIsRemoved.resize(geometry.GetVariables().size());
      positions.mNew.resize(geometry.GetVariables().size());
      std::uint32_t next = 0;
      for (std::uint32_t i = 0; i != positions.mNew.size(); ++i) {
        positions.mNew[i] = next;
        positions.mIsRemoved[i] = isRemoved && isRemoved({id, i}, geometry.GetVariables()[i]);
        if (!positions.mIsRemoved[i]) ++next;
      }
      mNumRemoved += positions.mNew.size() - next;
    });
  }

  /// Returns nothing for a result that is removed. There must be a result at `place`.
  std::optional<ResultPlace> Find(const ResultPlace& place) const {
    const auto found = mGeometries.find(place.mNode);
    if (found == mGeometries.end() || found->second.mIsRemoved[place.mPosition]) return {};
    return ResultPlace{place.mNode, found->second.mNew[place.mPosition]};
  }
  std::uint64_t GetNumRemoved() const { return mNumRemoved; }

  void RemoveFrom(NodeTree& nodes) const {
    for (const auto& [id, positions] : mGeometries) {
      AsGeometry(nodes.GetReqNode(id))->RemoveVariables(positions.mIsRemoved);
    }
  }

 private:
  struct Positions {
    std::vector<bool> mIsRemoved;
    std::vector<std::uint32_t> mNew;
  };
  std::map<std::uint32_t, Positions> mGeometries;  ///< Those that stay.
  std::uint64_t mNumRemoved = 0;
};

/// Copies the values of a removed result, or none for null. They are of the same type afterwards,
/// even if the kind of the result does not say that they are integers.
void TakeValues(Result& result, const Result* owner) {
  result.TakeValuesOf(owner == nullptr ? Result() : *owner);
  if (owner != nullptr && owner->HoldsUnsigned() && !result.HoldsUnsigned()) {
    result.mKindHighByte = Geometry::kUnsignedKindHighByte;
  }
}

/// Makes the links of the results that stay follow their targets.
class LinkUpdate {
 public:
  /// Follows all links before any is changed, because chains contain results that change.
  LinkUpdate(NodeTree& nodes, const NewPlaces& places)
      : mNodes(nodes), mPlaces(places), mFollower([this](const Result& result) {
          return IsKept(result.mLink) ? nullptr : FindTarget(mNodes, result.mLink);
        }) {
    ForEachGeometry(nodes, [this](std::uint32_t id, Geometry& geometry) {
      for (std::uint32_t i = 0; i != geometry.GetVariables().size(); ++i) {
        Result& result = geometry.EditVariable(i);
        const auto place = mPlaces.Find({id, i});
        if (place && result.mLink.IsLinked()) Add(result, *place);
      }
    });
  }

  void Apply() {
    for (auto& [result, link] : mLinks) result->mLink = link;
    for (const auto& [result, owner] : mTakers) TakeValues(*result, owner);
  }
  std::uint64_t GetNumReplaced() const { return mNumReplaced; }

 private:
  /// Returns true if a link has a target that is not removed.
  bool IsKept(const ResultLink& link) const {
    return FindTarget(mNodes, link) != nullptr && mPlaces.Find(link.GetPlace());
  }

  /// Decides about a linked result that stays and will be at `place`.
  void Add(Result& result, const ResultPlace& place) {
    const Result* last = mFollower.FindEnd(result);  // the last of the removed results of the chain
    if (last != &result) ++mNumReplaced;
    if (last == &result) {
      mLinks.emplace_back(&result, MakeFollow(last->mLink));
    } else if (last != nullptr && last->mLink.IsLinked()) {
      AddLink(result, place, MakeFollow(last->mLink));
    } else if (last == nullptr) {
      mTakers.emplace_back(&result, nullptr);
    } else if (const auto [taker, isFirst] = mNewOwners.try_emplace(last, place); isFirst) {
      mTakers.emplace_back(&result, last);
    } else {
      mLinks.emplace_back(&result, ResultLink(taker->second));
    }
  }

  /// Decides about a result whose link is replaced by `link`. A cycle from which all other results
  /// are removed becomes a result without values.
  void AddLink(Result& result, const ResultPlace& place, const ResultLink& link) {
    if (link.HasTarget() && link.GetPlace() != place) {
      mLinks.emplace_back(&result, link);
    } else {
      mTakers.emplace_back(&result, nullptr);
    }
  }

  /// Returns a link, which does not lead to a removed result, as it is after the removal.
  ResultLink MakeFollow(ResultLink link) const {
    if (IsKept(link)) {
      link.MoveTo(*mPlaces.Find(link.GetPlace()));
    } else {
      link.LoseTarget();
    }
    return link;
  }

  NodeTree& mNodes;
  const NewPlaces& mPlaces;
  LinkFollower<Result> mFollower;
  std::vector<std::pair<Result*, ResultLink>> mLinks;
  /// The results that take values over, with the removed owners; null for no values.
  std::vector<std::pair<Result*, const Result*>> mTakers;
  std::unordered_map<const Result*, ResultPlace> mNewOwners;  ///< By the removed owner.
  std::uint64_t mNumReplaced = 0;
};

}  // namespace

RemovedContent RemoveContent(NodeTree& nodes, const std::set<std::uint32_t>& ids,
                             const ResultPredicate& isRemoved) {
  if (ids.contains(NodeTree::kRootId)) {
    Qov::Util::Raise(kSource, Qov::Util::Exception::ErrorType::InvalidMethod,
                     "The root of a tree cannot be removed");
  }
  const std::set<std::uint32_t> removedIds = nodes.GetSubtrees(ids);
  const NewPlaces places(nodes, removedIds, isRemoved);
  LinkUpdate update(nodes, places);
  update.Apply();
  places.RemoveFrom(nodes);
  for (const std::uint32_t id : ids) {
    if (nodes.FindNode(id) != nullptr) nodes.RemoveNode(id);
  }
  return {removedIds.size(), places.GetNumRemoved(), update.GetNumReplaced()};
}

}  // namespace QovRyx
