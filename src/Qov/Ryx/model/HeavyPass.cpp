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
  variable.mOffset = GetEnd();
  if (CanCopyBytes(variable.mValues, mShuffle)) {
    if (!ShareSource(variable)) CopyStored(*variable.mValues.GetLoader());
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

void HeavyPass::SaveBytes(Geometry::VarStruct& variable, const void* bytes, std::uint64_t size) {
  variable.mOffset = GetEnd();
  StoreBytes(bytes, size);
}

/// Returns the number of bytes in the heavy stream.
std::uint64_t HeavyPass::GetEnd() const {
  const QovJbf::Index& index = mFile.GetIndex();
  return index.HasStream(kHeavyData) ? index.GetStreamLength(kHeavyData) : 0;
}

bool HeavyPass::Share(Geometry::VarStruct& variable, const Geometry::VarStruct& saved) {
  return saved.mOffset && ShareAt(variable, *saved.mOffset);
}

bool HeavyPass::ShareAt(Geometry::VarStruct& variable, std::uint64_t offset) {
  std::uint64_t& numSharing = mNumSharing.try_emplace(offset, 1).first->second;
  if (numSharing == kMostShares) return false;
  ++numSharing;
  variable.mOffset = offset;
  ProgressReport::Advance(variable.mValues.GetSize());
  return true;
}

/// Lets the result have bytes that were copied from the same place. Returns false if there are none
/// and its bytes must be written at its offset.
bool HeavyPass::ShareSource(Geometry::VarStruct& variable) {
  const DataLoader& loader = *variable.mValues.GetLoader();
  const Source source{&loader.GetReader(), loader.GetOffset(), loader.GetCount()};
  const auto [copied, isNew] = mCopied.try_emplace(source, *variable.mOffset);
  if (!isNew && ShareAt(variable, copied->second)) return true;
  copied->second = *variable.mOffset;
  return false;
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
  StoreBytes(mValues.data(), mValues.size() * sizeof(std::uint32_t));
}

void HeavyPass::StoreBytes(const void* bytes, std::uint64_t size) {
  if (size == 0) return;
  MarkBlocks();
  mFile.GetIndex().Put(kHeavyData, bytes, size);
  ProgressReport::Advance(size);
  mFile.GetIndex().FlushFrozen(mFile.GetStream());
}

void HeavyPass::SaveNodeSets(NodeSets& sets) {
  if (IsCopied(&sets)) return;
  MarkBlocks();
  sets.SaveDataBlocks(mFile, kHeavyData, false);
  mFile.GetIndex().FlushFrozen(mFile.GetStream());
}

void HeavyPass::Save(const HeavyItem& item) {
  item.mpResult != nullptr ? SaveArray(*item.mpResult) : SaveNodeSets(*item.mpSets);
}

bool HeavyPass::IsCopied(const HeavyItem& item) const {
  return item.mpResult != nullptr ? IsCopied(static_cast<const void*>(item.mpResult))
                                  : IsCopied(static_cast<const void*>(item.mpSets));
}

/// Marks the blocks that exist. A block that the next array begins is marked with a later array.
void HeavyPass::MarkBlocks() {
  mFile.AddBlockTransformation(kHeavyData, QovJbf::BlockFlag::kFreezeWhenFull);
  mFile.AddBlockTransformation(kHeavyData, QovJbf::BlockFlag::kCompressed);
}

}  // namespace QovRyx
