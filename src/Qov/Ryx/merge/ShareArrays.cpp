#include "ShareArrays.h"

#include <map>
#include <memory>
#include <tuple>
#include <utility>
#include <vector>

#include "MergeSteps.h"
#include "Qov/Log/Record.h"
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

/// Returns the results that are not linked, in the order of Save.
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
      : mNodes(nodes), mOwners(std::move(owners)), mFirst(std::move(first)) {}

  /// Returns the number of new links.
  std::uint64_t Run() {
    const auto links = FindLinks();
    FindPrimaries();
    ShareBytes();
    for (const auto& [i, primary] : mLinked) {
      Link(*mOwners[i].mpResult, mOwners[primary]);
    }
    for (const auto& [linked, owner, hasItsArray] : links) {
      if (owner->mLink.IsLinked()) linked->mLink = owner->mLink;
      if (hasItsArray) linked->mValues = owner->mValues;
    }
    return mLinked.size();
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

  /// Gives all primaries of a group the place of one of them that Save can copy.
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

  static void Link(Result& result, const Owner& primary) {
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

}  // namespace

SharedArrays ShareEqualArrays(Tree& tree, const SearchLimits& limits, bool keepsBlocks) {
  NodeTree& nodes = tree.GetNodes();
  std::vector<Owner> owners = FindOwners(nodes);
  std::vector<const NumericArray*> arrays;
  arrays.reserve(owners.size());
  for (const Owner& owner : owners) arrays.push_back(&owner.mpResult->mValues);
  EqualArrays equal = FindEqualArrays(arrays, limits);

  const StoredArrays before = CountStored(nodes);
  SharedArrays shared;
  if (keepsBlocks) shared.mKept = BlockKeeper(nodes, owners, equal.mFirst).Run();
  shared.mLinked = Sharing(nodes, std::move(owners), std::move(equal.mFirst)).Run();
  const StoredArrays after = CountStored(nodes);
  shared.mSharedBytes = after.mNumSharing;
  shared.mSavedBytes = before.mNumBytes - after.mNumBytes;
  shared.mNotCompared = equal.mNotCompared;
  Qov::Log::Trace(kMergeSource) << "Equal arrays: " << shared.mLinked << " linked, "
                                << shared.mSharedBytes << " sharing bytes, " << shared.mSavedBytes
                                << " bytes saved, " << shared.mNotCompared << " not compared";
  return shared;
}

}  // namespace QovRyx
