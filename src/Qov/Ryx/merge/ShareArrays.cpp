#include "ShareArrays.h"

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ArrayNames.h"
#include "MergeSteps.h"
#include "Qov/Log/Record.h"
#include "Qov/Ryx/InstanceNames.h"
#include "Qov/Ryx/Progress.h"
#include "container/SystemResources.h"
#include "model/BlockCopies.h"
#include "model/HeavyPass.h"
#include "model/LinkFollower.h"
#include "model/ModelFormat.h"

namespace QovRyx {
namespace {

using Result = Geometry::VarStruct;

/// A result that is not linked.
struct Owner {
  ResultPlace mPlace;
  Result* mpResult;
};

/// Returns the results that are not linked, with integer kinds first.
std::vector<Owner> FindOwners(NodeTree& nodes) {
  std::vector<Owner> owners;
  for (const bool integerKinds : {true, false}) {
    ForEachGeometry(nodes, [&](std::uint32_t id, Geometry& geometry) {
      for (std::uint32_t i = 0; i < geometry.GetVariables().size(); ++i) {
        Result& result = geometry.EditVariable(i);
        if (result.mLink.IsLinked() || result.IsIntegerKind() != integerKinds) continue;
        owners.push_back({{id, i}, &result});
      }
    });
  }
  return owners;
}

/// Returns the fields that a linked result has from its target.
auto GetSharedFields(const Result& result) {
  return std::make_tuple(result.mKindHighByte, result.HoldsUnsigned(), result.mFlag1, result.mFlag2,
                         result.mFlag3, result.mValue1, result.mValue2);
}

/// The arrays that Save stores.
struct StoredArrays {
  std::uint64_t mNumBytes = 0;
  std::uint64_t mNumSharing = 0;  ///< Results for which no bytes are stored.
};

StoredArrays CountStored(const NodeTree& nodes) {
  StoredArrays stored;
  std::map<std::tuple<const void*, std::uint64_t, std::uint64_t>, std::uint64_t> numShares;
  ForEachGeometry(nodes, [&](std::uint32_t, const Geometry& geometry) {
    for (const Result& result : geometry.GetVariables()) {
      const NumericArray& values = result.mValues;
      if (result.mLink.IsLinked()) continue;
      bool isStored = true;
      if (CanCopyBytes(values, true)) {
        const DataLoader& loader = *values.GetLoader();
        isStored = numShares[{&loader.GetReader(), loader.GetOffset(), loader.GetCount()}]++ %
                       kMostShares ==
                   0;
      }
      if (isStored) stored.mNumBytes += values.GetNumElements() * kElementSize;
      if (!isStored) ++stored.mNumSharing;
    }
  });
  return stored;
}

/// Separates the arrays of copied blocks from the arrays that they are equal to.
class BlockKeeper {
 public:
  BlockKeeper(NodeTree& nodes, const std::vector<Owner>& owners, std::vector<std::size_t>& first)
      : mOwners(owners), mFirst(first), mCopies(nodes, true, {BlockCopying::IfWholeNeeded}) {}

  /// Makes the arrays of all blocks that are worth copying the first ones of their groups. Returns
  /// the number of those that were not.
  std::uint64_t Run() {
    for (std::size_t i = 0; i < mOwners.size(); ++i) Count(i);
    std::uint64_t numKept = 0;
    for (std::size_t i = 0; i < mOwners.size(); ++i) {
      if (mFirst[i] == i || !mCopies.Contains(mOwners[i].mpResult)) continue;
      const Usage& usage = mUsages.at(GetBlock(i));
      if (2 * usage.mStored < usage.mAll) continue;
      mFirst[i] = i;
      ++numKept;
    }
    return numKept;
  }

 private:
  using BlockOfFile = std::pair<const void*, std::size_t>;
  struct Usage {
    std::uint64_t mAll = 0;     ///< Bytes of the results of the block.
    std::uint64_t mStored = 0;  ///< Bytes of those that would not be shared.
  };

  const DataLoader& GetLoader(std::size_t i) const {
    return *mOwners[i].mpResult->mValues.GetLoader();
  }
  std::uint64_t GetSize(std::size_t i) const { return GetLoader(i).GetCount() * kElementSize; }
  BlockOfFile GetBlock(std::size_t i) const {
    const QovJbf::StreamReader& reader = GetLoader(i).GetReader();
    return {&reader, reader.FindBlock(GetLoader(i).GetOffset(), GetSize(i))->mBlock};
  }
  void Count(std::size_t i) {
    if (!mCopies.Contains(mOwners[i].mpResult)) return;
    Usage& usage = mUsages[GetBlock(i)];
    usage.mAll += GetSize(i);
    if (mFirst[i] == i) usage.mStored += GetSize(i);
  }

  const std::vector<Owner>& mOwners;
  std::vector<std::size_t>& mFirst;
  BlockCopies mCopies;
  std::map<BlockOfFile, Usage> mUsages;
};

/// Links and shares the arrays of a model.
class Sharing {
 public:
  Sharing(NodeTree& nodes, std::vector<Owner> owners, std::vector<std::size_t> first)
      : mNodes(nodes), mOwners(std::move(owners)), mFirst(std::move(first)) {
    FindPrimaries();
  }

  /// Returns the number of new links.
  std::uint64_t Link() {
    const auto links = FindLinks();
    for (const auto& [i, primary] : mLinked) {
      LinkTo(mOwners[primary], *mOwners[i].mpResult);
    }
    for (const auto& [linked, owner, hasItsArray] : links) {
      if (owner->mLink.IsLinked()) linked->mLink = owner->mLink;
      if (hasItsArray) linked->mValues = owner->mValues;
    }
    return mLinked.size();
  }

  /// Gives all primaries of a group the place of one of them that Save can copy. Called before
  /// Link.
  void ShareBytes() {
    for (const auto& [first, primaries] : mGroups) {
      const DataLoader* source = nullptr;
      for (const auto& [fields, i] : primaries) {
        const NumericArray& values = At(i).mValues;
        if (source == nullptr && CanCopyBytes(values, true)) source = values.GetLoader().get();
      }
      if (source == nullptr || primaries.size() == 1) continue;
      const DataLoader place = *source;
      for (const auto& [fields, i] : primaries) {
        NumericArray& values = At(i).mValues;
        // Each owner has its own loader, because ValueOwners identifies owners by their loaders.
        values = NumericArray(values.GetSize(), values.GetWidth(),
                              std::make_shared<const DataLoader>(place));
      }
    }
  }

 private:
  /// The results of a group that keep their own entries, by the fields that they share with links.
  using Fields = decltype(GetSharedFields(std::declval<const Result&>()));
  using Primaries = std::map<Fields, std::size_t>;

  /// A result that was linked before.
  struct OldLink {
    Result* mpLinked;
    const Result* mpOwner;
    bool mHasItsArray;  ///< False if a merge has replaced the target.
  };

  std::vector<OldLink> FindLinks() {
    std::vector<OldLink> links;
    LinkFollower<Result> follower = FollowLinks(mNodes);
    ForEachGeometry(mNodes, [&](std::uint32_t, Geometry& geometry) {
      for (std::size_t i = 0; i < geometry.GetVariables().size(); ++i) {
        Result& result = geometry.EditVariable(i);
        if (!result.mLink.HasTarget()) continue;
        const Result* owner = follower.FindOwner(result);
        if (owner == nullptr) continue;
        links.push_back({&result, owner, result.mValues.GetLoader() == owner->mValues.GetLoader()});
      }
    });
    return links;
  }

  void FindPrimaries() {
    for (std::size_t i = 0; i < mOwners.size(); ++i) {
      if (mFirst[i] == i) continue;
      Primaries& primaries = mGroups[mFirst[i]];
      if (primaries.empty()) primaries[GetSharedFields(At(mFirst[i]))] = mFirst[i];
      const auto [primary, isNew] = primaries.try_emplace(GetSharedFields(At(i)), i);
      if (!isNew) mLinked.emplace_back(i, primary->second);
    }
  }

  static void LinkTo(const Owner& primary, Result& result) {
    result.mLink = ResultLink(primary.mPlace);
    result.mValues = primary.mpResult->mValues;
  }

  Result& At(std::size_t i) const { return *mOwners[i].mpResult; }

  NodeTree& mNodes;
  std::vector<Owner> mOwners;
  std::vector<std::size_t> mFirst;  ///< For each owner, the first one with an equal array.
  std::map<std::size_t, Primaries> mGroups;
  std::vector<std::pair<std::size_t, std::size_t>> mLinked;  ///< New links and their targets.
};

/// Saves the arrays of owners, each of a group of equal ones once.
class StoreOnce {
 public:
  StoreOnce(const std::vector<Owner>& owners, HeavyPass& pass)
      : mOwners(owners), mPass(pass), mIsSaved(owners.size()) {}

  /// Saves an array that was examined, if it differs from those before.
  void SaveIfNew(std::size_t i, const ArraySearch::Examined& examined) {
    if (examined.mVerdict != ArraySearch::Verdict::New) return;
    Result& result = *mOwners[i].mpResult;
    if (examined.mpBytes) {
      mPass.SaveBytes(result, examined.mpBytes->mData.get(), examined.mpBytes->mSize);
      mNumStored += examined.mpBytes->mSize;
      mIsSaved[i] = true;
    } else {
      Save(i);
    }
  }

  /// Gives all other results that are not linked the bytes of an equal array, or saves them.
  void SaveRest(const std::vector<std::size_t>& first) {
    std::map<std::size_t, const Result*> stored;
    for (std::size_t i = 0; i < first.size(); ++i) {
      if (mIsSaved[i]) stored.emplace(first[i], mOwners[i].mpResult);
    }
    for (std::size_t i = 0; i < first.size(); ++i) {
      Result& result = *mOwners[i].mpResult;
      if (mIsSaved[i]) continue;
      if (result.mLink.IsLinked()) {
        ProgressReport::Advance(result.mValues.GetSize());
        continue;
      }
      const auto [equal, isNew] = stored.try_emplace(first[i], &result);
      if (!isNew && mPass.Share(result, *equal->second)) {
        ++mNumSharing;
        continue;
      }
      Save(i);
      equal->second = &result;
    }
  }

  std::uint64_t GetNumStored() const { return mNumStored; }
  std::uint64_t GetNumSharing() const { return mNumSharing; }

 private:
  void Save(std::size_t i) {
    Result& result = *mOwners[i].mpResult;
    mPass.SaveArray(result);
    mNumStored += result.mValues.GetNumElements() * kElementSize;
    mIsSaved[i] = true;
  }

  const std::vector<Owner>& mOwners;
  HeavyPass& mPass;
  std::vector<bool> mIsSaved;
  std::uint64_t mNumStored = 0;   ///< Bytes.
  std::uint64_t mNumSharing = 0;  ///< Results.
};

/// Returns the arrays of the owners. Several files often have the same mesh.
ArraySearch::Candidates GetCandidates(const std::vector<Owner>& owners) {
  ArraySearch::Candidates candidates;
  candidates.reserve(owners.size());
  for (const Owner& owner : owners) {
    const bool isMesh = IsMeshBase(SplitName(owner.mpResult->mName).mBase);
    candidates.push_back({&owner.mpResult->mValues, isMesh});
  }
  return candidates;
}

void Log(const SharedArrays& shared) {
  Qov::Log::Trace(kMergeSource) << "Equal arrays: " << shared.mLinked << " linked, "
                                << shared.mSharedBytes << " sharing bytes, " << shared.mSavedBytes
                                << " bytes saved, " << shared.mNotCompared << " not compared";
}

}  // namespace

SharingSaver::SharingSaver(const SearchLimits& limits) : mLimits(limits) {
  mLimits.mWhole = std::min(mLimits.mWhole, QovJbf::SystemResources().GetFreeMemory() / 4);
}

void SharingSaver::Save(NodeTree& nodes, const std::vector<HeavyItem>& items, HeavyPass& pass) {
  if (!mNumBytesBefore) mNumBytesBefore = CountStored(nodes).mNumBytes;
  const std::vector<Owner> owners = FindOwners(nodes);
  std::unordered_map<const Result*, std::size_t> positions;
  for (std::size_t i = 0; i < owners.size(); ++i) positions[owners[i].mpResult] = i;
  ArraySearch search(GetCandidates(owners), mLimits);
  StoreOnce store(owners, pass);
  for (const HeavyItem& item : items) {
    if (item.mpResult == nullptr) {
      pass.Save(item);
      continue;
    }
    const std::size_t i = positions.at(item.mpResult);
    store.SaveIfNew(i, search.Examine(i));
  }
  const EqualArrays equal = search.Finish();
  mShared.mNotCompared = equal.mNotCompared;
  mShared.mLinked += Sharing(nodes, owners, equal.mFirst).Link();
  store.SaveRest(equal.mFirst);
  mShared.mSharedBytes = store.GetNumSharing();
  mShared.mSavedBytes = *mNumBytesBefore - std::min(*mNumBytesBefore, store.GetNumStored());
  Log(mShared);
}

SharedArrays ShareBeforeCopying(Tree& tree, const SearchLimits& limits) {
  NodeTree& nodes = tree.GetNodes();
  std::vector<Owner> owners = FindOwners(nodes);
  EqualArrays equal = FindEqualArrays(GetCandidates(owners), limits);
  const StoredArrays before = CountStored(nodes);
  SharedArrays shared;
  shared.mKept = BlockKeeper(nodes, owners, equal.mFirst).Run();
  Sharing sharing(nodes, std::move(owners), std::move(equal.mFirst));
  sharing.ShareBytes();
  shared.mLinked = sharing.Link();
  const StoredArrays after = CountStored(nodes);
  shared.mSharedBytes = after.mNumSharing;
  shared.mSavedBytes = before.mNumBytes - after.mNumBytes;
  shared.mNotCompared = equal.mNotCompared;
  Log(shared);
  return shared;
}

std::uint64_t CountLeastStored(const NodeTree& nodes) {
  std::set<std::pair<std::uint64_t, std::uint8_t>> seen;
  std::uint64_t numBytes = 0;
  ForEachGeometry(nodes, [&](std::uint32_t, const Geometry& geometry) {
    for (const Result& result : geometry.GetVariables()) {
      const NumericArray& values = result.mValues;
      if (result.mLink.IsLinked()) continue;
      if (seen.emplace(values.GetSize(), values.GetWidth()).second) numBytes += values.GetSize();
    }
  });
  return numBytes;
}

}  // namespace QovRyx
