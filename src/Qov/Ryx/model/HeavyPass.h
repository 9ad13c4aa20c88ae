#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <tuple>
#include <vector>

#include "BlockCopies.h"
#include "Qov/Jbf/JbFile.h"
#include "Qov/Ryx/Geometry.h"
#include "Qov/Ryx/NodeSets.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// The bytes of all arrays of a model that are not those of others.
std::uint64_t CountHeavyBytes(const NodeTree& nodes);
/// True if the bytes in the file that the array comes from are those that are to be written.
bool IsStoredAlike(const NumericArray& array, bool shuffle);

/// Writes the arrays and node sets of a model to the heavy stream, one after the other. Blocks are
/// compressed while they fill, and go to the file as far as they can. An array that another file
/// holds just as it is to be written is copied from there; only others are in memory as a whole,
/// one at a time.
class HeavyPass {
 public:
  /// `expectedLength`: what CountHeavyBytes says of the model.
  HeavyPass(QovJbf::JbFile& file, bool shuffle, std::uint64_t expectedLength = 0);

  /// Copies what can be copied of the inputs' blocks, before anything is saved. What they hold is
  /// passed over then.
  void CopyBlocks(NodeTree& nodes);
  /// Connectivity and ids, which come first in a file.
  void SaveConnectivityBlocks(Geometry& geometry) { SaveBlocks(geometry, true); }
  void SaveOtherBlocks(Geometry& geometry) { SaveBlocks(geometry, false); }
  void SaveNodeSets(NodeSets& sets);

 private:
  void SaveBlocks(Geometry& geometry, bool integerKinds);
  void SaveArray(Geometry::VarStruct& variable);
  bool IsPlaced(Geometry::VarStruct& variable);
  void CopyStored(const DataLoader& loader);
  void StoreValues(const NumericArray& array);
  void MarkBlocks();
  bool IsCopied(const void* content) const { return mCopies && mCopies->Hold(content); }

  QovJbf::JbFile& mFile;
  bool mShuffle;
  std::uint64_t mExpectedLength;
  std::optional<BlockCopies> mCopies;

  /// Where bytes of a source were put; results that share them there share them here.
  struct Place {
    std::uint64_t mOffset = 0;
    std::uint64_t mNumShares = 0;
  };
  using Source = std::tuple<const QovJbf::StreamReader*, std::uint64_t, std::uint64_t>;
  std::map<Source, Place> mPlaces;
  std::vector<std::uint32_t> mValues;  ///< Any 4-byte elements, as bits.
};

}  // namespace QovRyx
