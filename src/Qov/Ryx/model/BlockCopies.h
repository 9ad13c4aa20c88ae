#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Qov/Jbf/JbFile.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Tells which blocks of the inputs are copied as they are stored.
enum class BlockCopying {
  Never,
  IfHalfNeeded,  ///< Blocks of which at least half of the content is needed.
  IfWholeNeeded  ///< Blocks of which all content is needed.
};

/// Tells how blocks of the inputs are copied.
struct CopySettings {
  BlockCopying mCopying = BlockCopying::Never;
  bool mCheck = false;  ///< Compares the copied blocks with their lengths and checksums.
};

/// Copies heavy blocks of the inputs to the output as they are stored:
///
///   input   block 7: | array a | array b | array c |       a, c: needed; b: dropped by the merge
///   output  block 2: | array a | array b | array c |       a at the start of block 2, c at the
///                                                          same distance from it as before
///
/// The offset of an array changes by the difference between the offsets of the two blocks. Bytes
/// that the model does not need are copied too, unless BlockCopying excludes that.
/// An array is needed from the block if it is completely inside and is written with the bytes that
/// it has there. All other arrays are written as usual, after the copies. So are the arrays of a
/// block whose bytes are shared by more results than kMostShares allows.
/// Node sets are needed from their block if it is the last one of its stream, because only then is
/// it certain, without decompressing it, that they end inside it. If all content must be needed,
/// the sets are read to find their ends.
class BlockCopies {
 public:
  /// Finds the blocks to copy. `shuffle` says if arrays are shuffled in the output.
  BlockCopies(NodeTree& nodes, bool shuffle, const CopySettings& settings);

  /// Appends the blocks to the heavy stream of `file`, which has no open block, and sets the
  /// offsets of their content. Raises the errors of StreamReader::Read for damaged blocks if blocks
  /// are checked.
  void CopyTo(QovJbf::JbFile& file) const;

  /// Returns true for results and node sets whose bytes the copies contain.
  bool Contains(const void* content) const { return mContent.contains(content); }
  /// Returns the number of bytes of these results.
  std::uint64_t GetNumBytes() const { return mNumBytes; }

 private:
  struct Array {
    Geometry::VarStruct* mpVariable;
    std::uint64_t mOffset;
  };
  struct Copy {
    QovJbf::StreamReader* mpReader;
    QovJbf::StreamReader::BlockExtent mExtent;
    std::vector<Array> mArrays;
    std::vector<NodeSets*> mSets;
    std::set<std::uint64_t> mOffsets;  ///< Offsets of the needed content, which results may share.
    std::uint64_t mInArrays = 0;       ///< Bytes of the needed arrays.
    std::uint64_t mInSets = 0;         ///< Bytes of the needed node sets, at least.
    std::uint64_t mShared = 0;         ///< Needed bytes, with shared bytes counted each time.
  };

  void Note(Geometry::VarStruct& variable, bool shuffle);
  void Note(NodeSets& sets, BlockCopying copying);
  static bool IsWorthwhile(const Copy& copy, BlockCopying copying);
  Copy& GetCopy(QovJbf::StreamReader& reader, const QovJbf::StreamReader::BlockExtent& extent);
  void DropUnprofitableCopies(BlockCopying copying);
  void CollectContent();

  bool mCheck;
  std::vector<Copy> mCopies;  ///< In the order of the first result of each.
  std::map<std::pair<QovJbf::StreamReader*, std::size_t>, std::size_t> mPlaces;
  std::unordered_set<const void*> mContent;
  std::uint64_t mNumBytes = 0;
};

/// Returns the settings that the environment variable RYXMERGE_COPY_BLOCKS chooses: 1 copies blocks
/// without a check, check copies and checks them.
CopySettings GetCopySettings();

}  // namespace QovRyx
