#include "ReadPlan.h"

#include <algorithm>
#include <map>
#include <utility>

#include "container/ThreadCount.h"

namespace QovRyx {
namespace {

/// The number of a file, from 1, and the offset in its heavy stream. Items in memory have file 0.
using Place = std::pair<std::size_t, std::uint64_t>;

/// Finds the places of items.
class Places {
 public:
  Place Find(const HeavyItem& item) {
    if (item.mpSets != nullptr) {
      return Make(item.mpSets->GetReader(), item.mpSets->GetSourceOffset());
    }
    const DataLoader* loader = item.mpResult->mValues.GetLoader().get();
    return loader == nullptr ? Place() : Make(&loader->GetReader(), loader->GetOffset());
  }

 private:
  Place Make(const QovJbf::StreamReader* reader, std::uint64_t offset) {
    if (reader == nullptr) return {};
    return {mFiles.try_emplace(reader, mFiles.size() + 1).first->second, offset};
  }

  std::map<const QovJbf::StreamReader*, std::size_t> mFiles;
};

/// Adds the part that holds the sets. They are the last content of their stream, so they are
/// assumed to reach the end of the last block.
void AddSets(const NodeSets& sets, QovJbf::ReadAhead::Parts& parts) {
  const QovJbf::StreamReader* reader = sets.GetReader();
  if (reader == nullptr) return;
  const std::uint64_t offset = sets.GetSourceOffset();
  const auto block = reader->FindBlock(offset, 1);
  const bool isLast = block && block->mIsLast;
  parts.push_back(
      {reader, offset,
       isLast ? block->mStart + block->mRawLength - offset : sets.GetLeastStoredSize()});
}

/// Removes the parts of the first block.
void LeaveOutFirstBlock(std::uint64_t largestReadOnce, QovJbf::ReadAhead::Parts& parts) {
  constexpr std::uint32_t kLeastLarge = 16U << 20;
  if (parts.empty() || QovJbf::GetThreadCount(0) == 1) return;
  const QovJbf::StreamReader* reader = parts[0].mpReader;
  const auto block = reader->FindBlock(parts[0].mOffset, 1);
  if (!block || block->mRawLength < kLeastLarge) return;
  const std::uint64_t end = block->mStart + block->mRawLength;
  const auto rest = std::find_if(parts.begin(), parts.end(), [=](const auto& part) {
    return part.mpReader != reader || part.mOffset + part.mSize > end;
  });
  const bool isReadOnce = std::all_of(
      parts.begin(), rest, [=](const auto& part) { return part.mSize <= largestReadOnce; });
  if (isReadOnce) parts.erase(parts.begin(), rest);
}

}  // namespace

void AddPart(const NumericArray& array, QovJbf::ReadAhead::Parts& parts) {
  const auto& loader = array.GetLoader();
  if (!loader || loader->GetCount() == 0) return;
  parts.push_back({&loader->GetReader(), loader->GetOffset(), loader->GetCount() * kElementSize});
}

std::vector<HeavyItem> ListByInput(NodeTree& nodes) {
  std::vector<std::pair<Place, HeavyItem>> placed;
  Places places;
  const auto add = [&](const HeavyItem& item) { placed.emplace_back(places.Find(item), item); };
  ForEachGeometry(nodes, [&](std::uint32_t, Geometry& geometry) {
    for (std::size_t i = 0; i < geometry.GetVariables().size(); ++i) {
      Geometry::VarStruct& result = geometry.EditVariable(i);
      if (!result.mLink.IsLinked()) add({&result, nullptr});
    }
  });
  for (auto& [id, entry] : nodes) {
    if (auto* sets = dynamic_cast<NodeSets*>(entry.mData.get())) add({nullptr, sets});
  }
  std::stable_sort(placed.begin(), placed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<HeavyItem> items;
  items.reserve(placed.size());
  for (const auto& [place, item] : placed) items.push_back(item);
  return items;
}

QovJbf::ReadAhead::Parts PlanReads(const std::vector<HeavyItem>& items,
                                   std::uint64_t largestReadOnce) {
  QovJbf::ReadAhead::Parts parts;
  for (const HeavyItem& item : items) {
    if (item.mpSets != nullptr) {
      AddSets(*item.mpSets, parts);
      continue;
    }
    const NumericArray& values = item.mpResult->mValues;
    AddPart(values, parts);
    if (values.GetNumElements() * kElementSize > largestReadOnce) AddPart(values, parts);
  }
  LeaveOutFirstBlock(largestReadOnce, parts);
  return parts;
}

}  // namespace QovRyx
