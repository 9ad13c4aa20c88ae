#include "mesh/SetMasks.h"

#include <algorithm>

namespace QovMesh {

SetMasks::SetMasks(std::span<const std::uint32_t> nodeIds) {
  mPoints.reserve(nodeIds.size());
  for (const std::uint32_t id : nodeIds) {
    mPoints.push_back({id, static_cast<std::uint32_t>(mPoints.size())});
  }
  if (!std::is_sorted(mPoints.begin(), mPoints.end(), IsLess)) {
    std::sort(mPoints.begin(), mPoints.end(), IsLess);
  }
}

std::uint64_t SetMasks::CountKnown(std::span<const std::uint32_t> numbers) const {
  return static_cast<std::uint64_t>(
      std::count_if(numbers.begin(), numbers.end(), [&](std::uint32_t number) {
        return std::binary_search(mPoints.begin(), mPoints.end(), Point{number, 0}, IsLess);
      }));
}

std::vector<std::uint8_t> SetMasks::MakeMask(std::span<const std::uint32_t> numbers) const {
  std::vector<std::uint8_t> mask(mPoints.size());
  for (const std::uint32_t number : numbers) {
    const auto [first, last] =
        std::equal_range(mPoints.begin(), mPoints.end(), Point{number, 0}, IsLess);
    if (first != last && mask[first->mIndex] != 0) continue;  // the number is repeated
    for (auto point = first; point != last; ++point) mask[point->mIndex] = 1;
  }
  return mask;
}

}  // namespace QovMesh
