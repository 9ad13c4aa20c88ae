#include "mesh/SetMasks.h"

#include <algorithm>

namespace QovMesh {
namespace {

std::vector<std::uint32_t> Sorted(std::span<const std::uint32_t> values) {
  std::vector<std::uint32_t> sorted(values.begin(), values.end());
  std::sort(sorted.begin(), sorted.end());
  return sorted;
}

bool Contains(const std::vector<std::uint32_t>& sorted, std::uint32_t value) {
  return std::binary_search(sorted.begin(), sorted.end(), value);
}

}  // namespace

SetMasks::SetMasks(std::span<const std::uint32_t> nodeIds)
    : mIds(nodeIds.begin(), nodeIds.end()), mSortedIds(Sorted(nodeIds)) {}

std::uint64_t SetMasks::CountKnown(std::span<const std::uint32_t> numbers) const {
  return static_cast<std::uint64_t>(
      std::count_if(numbers.begin(), numbers.end(),
                    [&](std::uint32_t number) { return Contains(mSortedIds, number); }));
}

std::vector<std::uint8_t> SetMasks::MakeMask(std::span<const std::uint32_t> numbers) const {
  const std::vector<std::uint32_t> sorted = Sorted(numbers);
  std::vector<std::uint8_t> mask(mIds.size());
  for (std::size_t i = 0; i < mIds.size(); ++i) mask[i] = Contains(sorted, mIds[i]) ? 1 : 0;
  return mask;
}

}  // namespace QovMesh
