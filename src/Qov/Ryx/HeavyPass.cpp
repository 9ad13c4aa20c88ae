#include "HeavyPass.h"

#include "Qov/Ryx/StreamNames.h"
#include "Qov/Util/ByteShuffle.h"

namespace QovRyx {

void HeavyPass::SaveBlocks(Geometry& geometry, bool integerKinds) {
  for (std::size_t i = 0; i < geometry.GetVariables().size(); ++i) {
    Geometry::VarStruct& variable = geometry.EditVariable(i);
    if (!variable.mLinked && variable.IsIntegerKind() == integerKinds) SaveArray(variable);
  }
}

void HeavyPass::SaveArray(Geometry::VarStruct& variable) {
  variable.mValues.GetValues(mValues);
  QovJbf::Index& index = mFile.GetIndex();
  variable.mOffset = index.HasStream(kHeavyData) ? index.GetStreamLength(kHeavyData) : 0;
  if (mValues.empty()) return;
  MarkBlocks();
  if (mShuffle) QovUtil::ShuffleMultiVectorBytes(mValues, variable.mValues.GetWidth());
  index.Put(kHeavyData, mValues.data(), mValues.size() * sizeof(std::uint32_t));
  index.FlushFrozen(mFile.GetStream());
}

void HeavyPass::SaveNodeSets(NodeSets& sets) {
  MarkBlocks();
  sets.SaveDataBlocks(mFile, kHeavyData);
  mFile.GetIndex().FlushFrozen(mFile.GetStream());
}

/// A block that the next array begins is not marked yet; it goes to the file with a later one.
void HeavyPass::MarkBlocks() {
  mFile.AddBlockTransformation(kHeavyData, QovJbf::BlockFlag::kFreezeWhenFull);
  mFile.AddBlockTransformation(kHeavyData, QovJbf::BlockFlag::kCompressed);
}

}  // namespace QovRyx
