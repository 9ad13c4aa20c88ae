#pragma once

#include <cstdint>
#include <vector>

#include "Qov/Jbf/JbFile.h"
#include "Qov/Ryx/Geometry.h"
#include "Qov/Ryx/NodeSets.h"

namespace QovRyx {

/// Writes the arrays and node sets of a model to the heavy stream, one after the other. Full blocks
/// go to the file at once, so that memory holds one array and the block that is filling.
class HeavyPass {
 public:
  HeavyPass(QovJbf::JbFile& file, bool shuffle) : mFile(file), mShuffle(shuffle) {}

  /// Connectivity and ids, which come first in a file.
  void SaveConnectivityBlocks(Geometry& geometry) { SaveBlocks(geometry, true); }
  void SaveOtherBlocks(Geometry& geometry) { SaveBlocks(geometry, false); }
  void SaveNodeSets(NodeSets& sets);

 private:
  void SaveBlocks(Geometry& geometry, bool integerKinds);
  void SaveArray(Geometry::VarStruct& variable);
  void MarkBlocks();

  QovJbf::JbFile& mFile;
  bool mShuffle;
  std::vector<std::uint32_t> mValues;  ///< Any 4-byte elements, as bits.
};

}  // namespace QovRyx
