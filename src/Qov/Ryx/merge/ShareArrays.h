#pragma once

#include <optional>

#include "EqualArrays.h"
#include "Qov/Ryx/Merge.h"
#include "Qov/Ryx/Tree.h"
#include "model/HeavySaver.h"

namespace QovRyx {

/// Stores equal arrays once while a model is saved. Inputs are not decompressed again to find them,
/// except for the arrays that ArraySearch::Finish compares.
///
/// The first of equal arrays, with integer kinds before the others and otherwise in the order of
/// the tree, is the owner. A result with an equal array becomes a link to it, if the type of the
/// values, the high byte of the kind and the fields that a linked result does not store are equal
/// too. Otherwise it keeps its own entry and shares the stored bytes, up to kMostShares results.
///
/// Names, kinds, flags and attributes stay as they are. Links to a result that becomes a link lead
/// directly to the owner. Save raises the errors of ArraySearch before the tree is changed.
class SharingSaver : public HeavySaver {
 public:
  explicit SharingSaver(const SearchLimits& limits = {});

  std::uint64_t GetLargestReadOnce() const override { return mLimits.mWhole; }
  void Save(NodeTree& nodes, const std::vector<HeavyItem>& items, HeavyPass& pass) override;

  /// Returns the counts of the last Save.
  const SharedArrays& GetShared() const { return mShared; }

 private:
  SearchLimits mLimits;
  std::optional<std::uint64_t> mNumBytesBefore;  ///< Bytes that Save would store otherwise.
  SharedArrays mShared;
};

/// Makes the same links before Save copies blocks of the inputs. Called after the last change of
/// the tree.
///
/// Arrays stay in the blocks that Save copies if BlockCopying::IfWholeNeeded applies, so that it
/// can copy them. Blocks of which less than half would be stored are given up: their arrays are
/// shared, and Save compresses the rest. Bytes can be shared only if one of the equal arrays is
/// stored as Save stores it, not in memory or in a file of the older layouts.
SharedArrays ShareBeforeCopying(Tree& tree, const SearchLimits& limits = {});

/// Returns the least number of bytes that Save stores if all arrays of the same size and width are
/// equal.
std::uint64_t CountLeastStored(const NodeTree& nodes);

}  // namespace QovRyx
