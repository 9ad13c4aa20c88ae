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
#include "ReadPlan.h"
#include "SkippedBytes.h"

namespace QovRyx {

/// Returns the number of bytes of the values of all results that are not linked.
std::uint64_t CountHeavyBytes(const NodeTree& nodes);
/// Returns true if the array can be written by copying its bytes from the file that it comes from.
bool CanCopyBytes(const NumericArray& array, bool shuffle);
/// Reads all values into memory, in the form in which they are stored. The file that they come from
/// is not verified.
void LoadStoredForm(const NumericArray& array, bool shuffle, std::vector<std::uint32_t>& values);

/// Writes the arrays and node sets of a model to the heavy stream. Blocks are compressed while they
/// fill, and are written to the file as early as possible. An array that an input holds in the form
/// that the output needs is copied piece by piece. Any other array is in memory as a whole, one at
/// a time.
class HeavyPass {
 public:
  /// `expectedLength` is CountHeavyBytes of the model.
  HeavyPass(QovJbf::JbFile& file, bool shuffle, std::uint64_t expectedLength = 0);

  /// Copies whole blocks of the inputs (BlockCopies). Called before anything is saved. SaveArray
  /// and SaveNodeSets then skip the content of these blocks.
  void CopyBlocks(NodeTree& nodes, const CopySettings& settings);
  /// Writes the values of a result that is not linked, and sets its offset.
  void SaveArray(Geometry::VarStruct& variable);
  /// Does the same for a result whose values, in their stored form, the caller has read.
  void SaveBytes(Geometry::VarStruct& variable, const void* bytes, std::uint64_t size);
  /// Lets the result have the bytes of an equal one that is saved. Returns false and does nothing
  /// if these bytes have too many results.
  bool Share(Geometry::VarStruct& variable, const Geometry::VarStruct& saved);
  void SaveNodeSets(NodeSets& sets);
  /// Saves a result or node sets.
  void Save(const HeavyItem& item);
  /// Returns true if CopyBlocks has copied the item.
  bool IsCopied(const HeavyItem& item) const;

 private:
  std::uint64_t GetEnd() const;
  bool ShareAt(Geometry::VarStruct& variable, std::uint64_t offset);
  bool ShareSource(Geometry::VarStruct& variable);
  void CopyStored(const DataLoader& loader);
  void StoreValues(const NumericArray& array);
  void StoreBytes(const void* bytes, std::uint64_t size);
  void MarkBlocks();
  void CheckOrder(const QovJbf::StreamReader& reader) const;
  bool IsCopied(const void* content) const { return mCopies && mCopies->Contains(content); }

  QovJbf::JbFile& mFile;
  bool mShuffle;
  std::uint64_t mExpectedLength;
  std::optional<BlockCopies> mCopies;

  /// The offsets in the output of bytes that are copied from a place in an input. Results that
  /// share bytes in an input share them in the output.
  using Source = std::tuple<const QovJbf::StreamReader*, std::uint64_t, std::uint64_t>;
  std::map<Source, std::uint64_t> mCopied;
  /// The number of results at an offset of the output, if there is more than one.
  std::map<std::uint64_t, std::uint64_t> mNumSharing;
  SkippedBytes mSkipped;
  std::vector<std::uint32_t> mValues;  ///< A buffer for the bits of an array of any type.
};

}  // namespace QovRyx
