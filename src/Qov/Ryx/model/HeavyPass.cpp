#include "HeavyPass.h"

#include <algorithm>

#include "ModelFormat.h"
#include "Qov/Ryx/Progress.h"
#include "Qov/Util/Raise.h"
#include "StreamNames.h"
#include "diagnostics/ByteShuffle.h"

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/Tree";

}  // namespace

std::uint64_t CountHeavyBytes(const NodeTree& nodes) {
  std::uint64_t numBytes = 0;
  ForEachGeometry(nodes, [&numBytes](std::uint32_t, const Geometry& geometry) {
    for (const Geometry::VarStruct& variable : geometry.GetVariables()) {
      if (!variable.mLink.IsLinked()) numBytes += variable.mValues.GetSize();
    }
  });
  return numBytes;
}

bool CanCopyBytes(const NumericArray& array, bool shuffle) {
  const auto& loader = array.GetLoader();
  return loader && loader->GetCount() != 0 &&
         loader->GetShuffledWidth() == (shuffle ? array.GetWidth() : 0);
}

void LoadStoredForm(const NumericArray& array, bool shuffle, std::vector<std::uint32_t>& values) {
  const auto& loader = array.GetLoader();
  if (loader && loader->GetCount() != 0) {
    loader->LoadUnverified(values);
  } else {
    array.GetValues(values);
  }
  if (shuffle && !values.empty()) QovUtil::ShuffleMultiVectorBytes(values, array.GetWidth());
}

HeavyPass::HeavyPass(QovJbf::JbFile& file, bool shuffle, std::uint64_t expectedLength)
    : mFile(file), mShuffle(shuffle), mExpectedLength(expectedLength) {
  mFile.CompressWhileFilling(kHeavyData, expectedLength);
}

void HeavyPass::CopyBlocks(NodeTree& nodes, const CopySettings& settings) {
  mCopies.emplace(nodes, mShuffle, settings);
  mCopies->CopyTo(mFile);
  mExpectedLength -= std::min(mExpectedLength, mCopies->GetNumBytes());
  mFile.CompressWhileFilling(kHeavyData, mExpectedLength);
}

void HeavyPass::SaveArray(Geometry::VarStruct& variable) {
  if (IsCopied(&variable)) return;
  const auto& loader = variable.mValues.GetLoader();
  if (loader) mSkipped.Watch(loader->GetReader());
  const QovJbf::Index& index = mFile.GetIndex();
  variable.mOffset = index.HasStream(kHeavyData) ? index.GetStreamLength(kHeavyData) : 0;
  if (CanCopyBytes(variable.mValues, mShuffle)) {
    if (!ShareBytes(variable)) CopyStored(*variable.mValues.GetLoader());
  } else {
    StoreValues(variable.mValues);
  }
  if (loader) CheckOrder(loader->GetReader());
}

/// Refuses a file whose arrays are in such an order that reading them decompresses far more bytes
/// than the file holds.
void HeavyPass::CheckOrder(const QovJbf::StreamReader& reader) const {
  if (!mSkipped.AreTooMany(reader)) return;
  Qov::Util::WithFileContext(reader.GetPath(), [] {
    Qov::Util::Raise(kSource, Qov::Util::Exception::ErrorType::OutOfBounds,
                     "The arrays lie too far out of order");
  });
}

/// Lets the result have bytes that are already in the output, if there are any. Returns false if
/// its bytes must be written at its offset.
bool HeavyPass::ShareBytes(Geometry::VarStruct& variable) {
  const DataLoader& loader = *variable.mValues.GetLoader();
  Place& place = mPlaces[{&loader.GetReader(), loader.GetOffset(), loader.GetCount()}];
  if (place.mNumShares % kMostShares == 0) place.mOffset = *variable.mOffset;
  if (place.mNumShares++ % kMostShares == 0) return false;
  variable.mOffset = place.mOffset;
  ProgressReport::Advance(variable.mValues.GetSize());
  return true;
}

/// Copies an array piece by piece, without holding it in memory.
void HeavyPass::CopyStored(const DataLoader& loader) {
  MarkBlocks();
  std::uint64_t done = 0;
  mFile.GetIndex().Put(kHeavyData, loader.GetCount() * kElementSize,
                       [&loader, &done](void* target, std::size_t n) {
                         loader.ReadStored(done, target, n);
                         done += n;
                         ProgressReport::Advance(n);
                       });
  mFile.GetIndex().FlushFrozen(mFile.GetStream());
}

void HeavyPass::StoreValues(const NumericArray& array) {
  LoadStoredForm(array, mShuffle, mValues);
  if (mValues.empty()) return;
  MarkBlocks();
  const std::uint64_t size = mValues.size() * sizeof(std::uint32_t);
  mFile.GetIndex().Put(kHeavyData, mValues.data(), size);
  ProgressReport::Advance(size);
  mFile.GetIndex().FlushFrozen(mFile.GetStream());
}

void HeavyPass::SaveNodeSets(NodeSets& sets) {
  if (IsCopied(&sets)) return;
  MarkBlocks();
  sets.SaveDataBlocks(mFile, kHeavyData, false);
  mFile.GetIndex().FlushFrozen(mFile.GetStream());
}

/// Marks the blocks that exist. A block that the next array begins is marked with a later array.
void HeavyPass::MarkBlocks() {
  mFile.AddBlockTransformation(kHeavyData, QovJbf::BlockFlag::kFreezeWhenFull);
  mFile.AddBlockTransformation(kHeavyData, QovJbf::BlockFlag::kCompressed);
}

}  // namespace QovRyx
