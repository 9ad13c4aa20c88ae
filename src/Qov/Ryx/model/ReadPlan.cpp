#include "ReadPlan.h"

#include <algorithm>
#include <map>
#include <unordered_map>
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

/// Adds the part that holds the sets. Sets in the last block are assumed to reach its end.
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

std::vector<HeavyItem> ListByTree(NodeTree& nodes) {
  std::vector<HeavyItem> items;
  for (const bool integerKinds : {true, false}) {
    ForEachGeometry(nodes, [&](std::uint32_t, Geometry& geometry) {
      for (std::size_t i = 0; i < geometry.GetVariables().size(); ++i) {
        Geometry::VarStruct& result = geometry.EditVariable(i);
        if (!result.mLink.IsLinked() && result.IsIntegerKind() == integerKinds) {
          items.push_back({&result, nullptr});
        }
      }
    });
  }
  for (auto& [id, entry] : nodes) {
    if (auto* sets = dynamic_cast<NodeSets*>(entry.mData.get())) items.push_back({nullptr, sets});
  }
  return items;
}

std::vector<HeavyItem> SortByInput(const std::vector<HeavyItem>& items) {
  std::vector<std::pair<Place, HeavyItem>> placed;
  Places places;
  for (const HeavyItem& item : items) placed.emplace_back(places.Find(item), item);
  std::stable_sort(placed.begin(), placed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<HeavyItem> sorted;
  sorted.reserve(placed.size());
  for (const auto& [place, item] : placed) sorted.push_back(item);
  return sorted;
}

std::uint64_t GetLeastSize(const HeavyItem& item) {
  return item.mpSets != nullptr ? item.mpSets->GetLeastStoredSize()
                                : item.mpResult->mValues.GetNumElements() * kElementSize;
}

/// Returns the number of bytes that a reader decompresses only to reach later ones. It reads the
/// items in the order `read`, and they are stored in the order `stored`. A block is decompressed
/// from its start when the reader comes back to it.
std::uint64_t CountSkipped(const std::vector<HeavyItem>& stored, std::uint64_t blockSize,
                           const std::vector<HeavyItem>& read) {
  std::unordered_map<const void*, Place> places;  // block, offset in it
  const auto getKey = [](const HeavyItem& item) {
    return item.mpSets != nullptr ? static_cast<const void*>(item.mpSets) : item.mpResult;
  };
  Place end{0, 0};
  for (const HeavyItem& item : stored) {
    if (end.second >= blockSize) end = {end.first + 1, 0};
    places[getKey(item)] = end;
    end.second += GetLeastSize(item);
  }
  std::uint64_t numSkipped = 0;
  Place at{0, 0};
  for (const HeavyItem& item : read) {
    const Place place = places.at(getKey(item));
    if (place.first != at.first || place.second < at.second) at = {place.first, 0};
    numSkipped += place.second - at.second;
    at.second = place.second + GetLeastSize(item);
  }
  return numSkipped;
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
    return part.mpReader != reader || part.mOffset >= end;
  });
  const bool isReadOnce = std::all_of(parts.begin(), rest, [=](const auto& part) {
    return part.mSize <= largestReadOnce && part.mOffset + part.mSize <= end;
  });
  if (isReadOnce) parts.erase(parts.begin(), rest);
}

}  // namespace

void AddPart(const NumericArray& array, QovJbf::ReadAhead::Parts& parts) {
  const auto& loader = array.GetLoader();
  if (!loader || loader->GetCount() == 0) return;
  parts.push_back({&loader->GetReader(), loader->GetOffset(), loader->GetCount() * kElementSize});
}

std::vector<HeavyItem> ListForSave(NodeTree& nodes, std::uint64_t blockSize) {
  std::vector<HeavyItem> byTree = ListByTree(nodes);
  std::vector<HeavyItem> byInput = SortByInput(byTree);
  constexpr std::uint64_t kMostTimes = 2;
  std::uint64_t numBytes = 0;
  for (const HeavyItem& item : byTree) numBytes += GetLeastSize(item);
  return CountSkipped(byInput, blockSize, byTree) <= kMostTimes * numBytes ? byInput : byTree;
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
