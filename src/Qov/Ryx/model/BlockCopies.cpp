#include "BlockCopies.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "HeavyPass.h"
#include "ModelFormat.h"
#include "Qov/Ryx/Progress.h"
#include "StreamNames.h"

namespace QovRyx {

CopySettings GetCopySettings() {
  const char* text = std::getenv("RYXMERGE_COPY_BLOCKS");
  const std::string_view value = text == nullptr ? "" : text;
  if (value == "1") return {BlockCopying::IfHalfNeeded, false};
  if (value == "check") return {BlockCopying::IfHalfNeeded, true};
  return {};
}

BlockCopies::BlockCopies(NodeTree& nodes, bool shuffle, const CopySettings& settings)
    : mCheck(settings.mCheck) {
  ForEachGeometry(nodes, [this, shuffle](std::uint32_t, Geometry& geometry) {
    for (std::size_t i = 0; i < geometry.GetVariables().size(); ++i) {
      Note(geometry.EditVariable(i), shuffle);
    }
  });
  for (auto& [id, entry] : nodes) {
    if (auto* sets = dynamic_cast<NodeSets*>(entry.mData.get())) Note(*sets, settings.mCopying);
  }
  DropUnprofitableCopies(settings.mCopying);
  CollectContent();
}

void BlockCopies::Note(Geometry::VarStruct& variable, bool shuffle) {
  if (variable.mLink.IsLinked() || !CanCopyBytes(variable.mValues, shuffle)) return;
  const DataLoader& loader = *variable.mValues.GetLoader();
  const std::uint64_t size = loader.GetCount() * kElementSize;
  const auto extent = loader.GetReader().FindBlock(loader.GetOffset(), size);
  if (!extent) return;
  Copy& copy = GetCopy(loader.GetReader(), *extent);
  copy.mArrays.push_back({&variable, loader.GetOffset()});
  copy.mShared += size;
  if (copy.mOffsets.insert(loader.GetOffset()).second) copy.mInArrays += size;
}

void BlockCopies::Note(NodeSets& sets, BlockCopying copying) {
  if (sets.GetReader() == nullptr) return;
  const std::uint64_t offset = sets.GetSourceOffset();
  std::uint64_t size = sets.GetLeastStoredSize();
  const auto extent = sets.GetReader()->FindBlock(offset, size);
  if (!extent || !extent->mIsLast) return;
  if (copying == BlockCopying::IfWholeNeeded) {
    size = Qov::Util::WithFileContext(sets.GetReader()->GetPath(),
                                      [&sets] { return sets.GetStoredEnd(); }) -
           offset;
  }
  Copy& copy = GetCopy(*sets.GetReader(), *extent);
  copy.mSets.push_back(&sets);
  copy.mShared += size;
  if (copy.mOffsets.insert(offset).second) copy.mInSets += size;
}

BlockCopies::Copy& BlockCopies::GetCopy(QovJbf::StreamReader& reader,
                                        const QovJbf::StreamReader::BlockExtent& extent) {
  const auto [place, isNew] = mPlaces.try_emplace({&reader, extent.mBlock}, mCopies.size());
  if (isNew) mCopies.push_back({&reader, extent, {}, {}, {}, 0, 0, 0});
  return mCopies[place->second];
}

/// Returns true if enough of the block is needed.
bool BlockCopies::IsWorthwhile(const Copy& copy, BlockCopying copying) {
  const std::uint64_t length = copy.mExtent.mRawLength;
  if (copying == BlockCopying::IfHalfNeeded) return 2 * (copy.mInArrays + copy.mInSets) >= length;
  return copy.mInArrays + copy.mInSets >= length;
}

void BlockCopies::DropUnprofitableCopies(BlockCopying copying) {
  mPlaces.clear();
  std::erase_if(mCopies, [copying](const Copy& copy) {
    const std::uint64_t length = copy.mExtent.mRawLength;
    return !IsWorthwhile(copy, copying) || copy.mShared > kMostShares * length ||
           copy.mSets.size() > kMostShares;  // each may be as long as the block
  });
}

void BlockCopies::CollectContent() {
  for (const Copy& copy : mCopies) {
    for (const Array& array : copy.mArrays) {
      mContent.insert(array.mpVariable);
      mNumBytes += array.mpVariable->mValues.GetSize();
    }
    mContent.insert(copy.mSets.begin(), copy.mSets.end());
  }
}

void BlockCopies::CopyTo(QovJbf::JbFile& file) const {
  QovJbf::Index& index = file.GetIndex();
  for (const Copy& copy : mCopies) {
    const std::uint64_t start = index.HasStream(kHeavyData) ? index.GetStreamLength(kHeavyData) : 0;
    index.PutStoredBlock(kHeavyData, *copy.mpReader, copy.mExtent, mCheck, file.GetStream());
    for (const Array& array : copy.mArrays) {
      array.mpVariable->mOffset = start + (array.mOffset - copy.mExtent.mStart);
      ProgressReport::Advance(array.mpVariable->mValues.GetSize());
    }
    for (NodeSets* sets : copy.mSets) {
      sets->SetStoredOffset(start + (sets->GetSourceOffset() - copy.mExtent.mStart));
    }
  }
  index.FinishChecks();
}

}  // namespace QovRyx
