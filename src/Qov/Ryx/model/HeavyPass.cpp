#include "HeavyPass.h"

#include <algorithm>

#include "Qov/Ryx/Progress.h"
#include "Qov/Ryx/StreamNames.h"
#include "Qov/Util/ByteShuffle.h"
#include "Qov/Util/Raise.h"
#include "SharedArrays.h"

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/Tree";
/// Every file may cost so many bytes that are inflated in vain, and so many times its length.
constexpr std::uint64_t kMostTimesInVain = 16;
constexpr std::uint64_t kFreeBytesInVain = std::uint64_t{1} << 30;

/// Arrays may lie in any order, but not so that a small file keeps us busy for hours.
void CheckOrder(const QovJbf::StreamReader& reader) {
  if (reader.GetNumDiscarded() / kMostTimesInVain <=
      reader.GetLength() + kFreeBytesInVain / kMostTimesInVain) {
    return;
  }
  Qov::Util::Raise(kSource, Qov::Util::Exception::ErrorType::OutOfBounds,
                   "The arrays lie too far out of order");
}

}  // namespace

std::uint64_t CountHeavyBytes(const NodeTree& nodes) {
  std::uint64_t numBytes = 0;
  ForEachGeometry(nodes, [&numBytes](std::uint32_t, const Geometry& geometry) {
    for (const Geometry::VarStruct& variable : geometry.GetVariables()) {
      if (!variable.mLinked) numBytes += variable.mValues.GetSize();
    }
  });
  return numBytes;
}

bool IsStoredAlike(const NumericArray& array, bool shuffle) {
  const auto& loader = array.GetLoader();
  return loader && loader->GetCount() != 0 &&
         loader->GetShuffledWidth() == (shuffle ? array.GetWidth() : 0);
}

HeavyPass::HeavyPass(QovJbf::JbFile& file, bool shuffle, std::uint64_t expectedLength)
    : mFile(file), mShuffle(shuffle), mExpectedLength(expectedLength) {
  mFile.CompressWhileFilling(kHeavyData, expectedLength);
}

void HeavyPass::CopyBlocks(NodeTree& nodes) {
  mCopies.emplace(nodes, mShuffle);
  mCopies->CopyTo(mFile);
  mExpectedLength -= std::min(mExpectedLength, mCopies->GetNumBytes());
  mFile.CompressWhileFilling(kHeavyData, mExpectedLength);
}

void HeavyPass::SaveBlocks(Geometry& geometry, bool integerKinds) {
  for (std::size_t i = 0; i < geometry.GetVariables().size(); ++i) {
    Geometry::VarStruct& variable = geometry.EditVariable(i);
    if (variable.mLinked || variable.IsIntegerKind() != integerKinds) continue;
    if (!IsCopied(&variable)) SaveArray(variable);
  }
}

void HeavyPass::SaveArray(Geometry::VarStruct& variable) {
  const QovJbf::Index& index = mFile.GetIndex();
  variable.mOffset = index.HasStream(kHeavyData) ? index.GetStreamLength(kHeavyData) : 0;
  if (IsStoredAlike(variable.mValues, mShuffle)) {
    if (!IsPlaced(variable)) CopyStored(*variable.mValues.GetLoader());
  } else {
    StoreValues(variable.mValues);
  }
  const auto& loader = variable.mValues.GetLoader();
  if (loader)
    Qov::Util::WithFileContext(loader->GetReader().GetPath(),
                               [&] { CheckOrder(loader->GetReader()); });
}

/// True if the bytes that the variable is to have are in the output already, where it then leads.
bool HeavyPass::IsPlaced(Geometry::VarStruct& variable) {
  const DataLoader& loader = *variable.mValues.GetLoader();
  Place& place = mPlaces[{&loader.GetReader(), loader.GetOffset(), loader.GetCount()}];
  if (place.mNumShares % kMostShares == 0) place.mOffset = *variable.mOffset;
  if (place.mNumShares++ % kMostShares == 0) return false;
  variable.mOffset = place.mOffset;
  ProgressReport::Advance(variable.mValues.GetSize());
  return true;
}

/// Piece by piece, without holding the array in memory.
void HeavyPass::CopyStored(const DataLoader& loader) {
  MarkBlocks();
  std::uint64_t done = 0;
  mFile.GetIndex().Put(kHeavyData, loader.GetCount() * sizeof(std::uint32_t),
                       [&loader, &done](void* target, std::size_t n) {
                         loader.ReadStored(done, target, n);
                         done += n;
                         ProgressReport::Advance(n);
                       });
  mFile.GetIndex().FlushFrozen(mFile.GetStream());
}

void HeavyPass::StoreValues(const NumericArray& array) {
  const auto& loader = array.GetLoader();
  if (loader && loader->GetCount() != 0) {
    loader->LoadUnverified(mValues);
  } else {
    array.GetValues(mValues);
  }
  if (mValues.empty()) return;
  MarkBlocks();
  if (mShuffle) QovUtil::ShuffleMultiVectorBytes(mValues, array.GetWidth());
  const std::uint64_t size = mValues.size() * sizeof(std::uint32_t);
  mFile.GetIndex().Put(kHeavyData, mValues.data(), size);
  ProgressReport::Advance(size);
  mFile.GetIndex().FlushFrozen(mFile.GetStream());
}

void HeavyPass::SaveNodeSets(NodeSets& sets) {
  if (IsCopied(&sets)) return;
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
