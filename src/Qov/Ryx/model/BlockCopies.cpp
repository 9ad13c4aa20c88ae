#include "BlockCopies.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "HeavyPass.h"
#include "ModelFormat.h"
#include "Qov/Ryx/Progress.h"
#include "Qov/Util/FileContext.h"
#include "StreamNames.h"

namespace QovRyx {
namespace {

void Append(QovJbf::JbFile& file, QovJbf::StreamReader& reader,
            const QovJbf::StreamReader::BlockExtent& block) {
  std::uint64_t done = 0;
  const auto source = [&](void* target, std::size_t n) {
    Qov::Util::WithFileContext(reader.GetPath(),
                               [&] { reader.ReadStored(block, done, target, n); });
    done += n;
  };
  file.GetIndex().PutStoredBlock(kHeavyData, block.mRawLength, block.mStoredSize, block.mCompressed,
                                 source, file.GetStream());
}

}  // namespace

bool IsBlockCopyEnabled() {
  const char* value = std::getenv("RYXMERGE_COPY_BLOCKS");
  return value != nullptr && std::string_view(value) == "1";
}

BlockCopies::BlockCopies(NodeTree& nodes, bool shuffle, BlockCopying copying) {
  ForEachGeometry(nodes, [this, shuffle](std::uint32_t, Geometry& geometry) {
    for (std::size_t i = 0; i < geometry.GetVariables().size(); ++i) {
      Note(geometry.EditVariable(i), shuffle);
    }
  });
  for (auto& [id, entry] : nodes) {
    if (auto* sets = dynamic_cast<NodeSets*>(entry.mData.get())) Note(*sets);
  }
  DropUnprofitableCopies(copying);
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

void BlockCopies::Note(NodeSets& sets) {
  if (sets.GetReader() == nullptr) return;
  const std::uint64_t size = sets.GetLeastStoredSize();
  const auto extent = sets.GetReader()->FindBlock(sets.GetSourceOffset(), size);
  if (!extent || !extent->mIsLast) return;
  Copy& copy = GetCopy(*sets.GetReader(), *extent);
  const std::uint64_t offset = sets.GetSourceOffset();
  copy.mSetsStart = copy.mSets.empty() ? offset : std::min(copy.mSetsStart, offset);
  copy.mSets.push_back(&sets);
  copy.mShared += size;
  if (copy.mOffsets.insert(offset).second) copy.mInSets += size;
}

BlockCopies::Copy& BlockCopies::GetCopy(QovJbf::StreamReader& reader,
                                        const QovJbf::StreamReader::BlockExtent& extent) {
  const auto [place, isNew] = mPlaces.try_emplace({&reader, extent.mBlock}, mCopies.size());
  if (isNew) mCopies.push_back({&reader, extent, {}, {}, {}, 0, 0, 0, 0});
  return mCopies[place->second];
}

/// Returns true if enough of the block is needed.
bool BlockCopies::IsWorthwhile(const Copy& copy, BlockCopying copying) {
  const std::uint64_t length = copy.mExtent.mRawLength;
  if (copying == BlockCopying::IfHalfNeeded) return 2 * (copy.mInArrays + copy.mInSets) >= length;
  const std::uint64_t end = copy.mExtent.mStart + length;
  return copy.mInArrays + (copy.mSets.empty() ? 0 : end - copy.mSetsStart) >= length;
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
  const QovJbf::Index& index = file.GetIndex();
  for (const Copy& copy : mCopies) {
    const std::uint64_t start = index.HasStream(kHeavyData) ? index.GetStreamLength(kHeavyData) : 0;
    Append(file, *copy.mpReader, copy.mExtent);
    for (const Array& array : copy.mArrays) {
      array.mpVariable->mOffset = start + (array.mOffset - copy.mExtent.mStart);
      ProgressReport::Advance(array.mpVariable->mValues.GetSize());
    }
    for (NodeSets* sets : copy.mSets) {
      sets->SetStoredOffset(start + (sets->GetSourceOffset() - copy.mExtent.mStart));
    }
  }
}

}  // namespace QovRyx
