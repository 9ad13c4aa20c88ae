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

/// Copies heavy blocks of the inputs to the output as they lie there, compressed bytes and all:
///
///   input   block 7: | array a | array b | array c |       a, c: wanted; b: dropped by the merge
///   output  block 2: | array a | array b | array c |       a at the start of block 2, c at its
///                                                          old distance from there
///
/// An array moves by the difference of the two places at which its block begins; that is all there
/// is to do for it. What nobody wants comes along unseen, so a block is worth copying only if half
/// of its bytes are wanted. An array counts if it lies wholly inside the block and would be
/// written with the bytes that it has there; all others are written as usual, behind the copies.
/// So is all of a block whose bytes more results share than those of a model as a whole may.
/// Node sets count if their block is the last of its stream: only then is it certain, without
/// inflating it, that they end inside it.
class BlockCopies {
 public:
  /// Finds what is to be copied. `shuffle` says whether arrays are to be shuffled in the output.
  BlockCopies(NodeTree& nodes, bool shuffle);

  /// Appends the blocks to the heavy stream of `file`, which has no open block, and notes the new
  /// offsets of what they hold.
  void CopyTo(QovJbf::JbFile& file) const;

  /// True for variables and node sets that the copies hold.
  bool Hold(const void* content) const { return mHeld.contains(content); }
  /// Bytes of the arrays that they hold.
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
    std::set<std::uint64_t> mOffsets;  ///< Where wanted content begins; results may share it.
    std::uint64_t mWanted = 0;
    std::uint64_t mShared = 0;  ///< The same with what is shared counted each time.
  };

  void Note(Geometry::VarStruct& variable, bool shuffle);
  void Note(NodeSets& sets);
  Copy& GetCopy(QovJbf::StreamReader& reader, const QovJbf::StreamReader::BlockExtent& extent);
  void DropUnworthy();

  std::vector<Copy> mCopies;  ///< In the order in which the model comes upon them.
  std::map<std::pair<QovJbf::StreamReader*, std::size_t>, std::size_t> mPlaces;
  std::unordered_set<const void*> mHeld;
  std::uint64_t mNumBytes = 0;
};

/// True if the user asks for copies: RYXMERGE_COPY_BLOCKS is 1.
bool AreBlockCopiesWanted();

}  // namespace QovRyx
