#include "ByteShuffle.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>

#include "BytePlanes.h"
#include "Qov/Util/Raise.h"

namespace QovUtil {
namespace {

constexpr const char* kSource = "include/Qov/Util/ByteShuffle";

// NOLINTNEXTLINE(modernize-avoid-c-arrays): a container would be filled with zeros first
using Buffer = std::unique_ptr<unsigned char[]>;

/// Returns a copy of the first `size` bytes of an array.
Buffer CopyBytes(const void* bytes, std::size_t size) {
  Buffer copy(new (std::nothrow) unsigned char[size]);
  if (!copy) Qov::Util::RaiseOutOfMemory(kSource);
  std::memcpy(copy.get(), bytes, size);
  return copy;
}

/// Returns a number of tuples that fit into the L1 cache together with their planes.
std::size_t GetTileSize(std::size_t width) {
  constexpr std::size_t kTileElements = 2048;
  constexpr std::size_t kLeastTuples = 16;
  return std::max(kTileElements / width, kLeastTuples);
}

/// Returns the planes of one component, from tuple `begin` on.
template <class Byte>
std::array<Byte*, kElementSize> GetPlanes(Byte* planes, std::size_t count, std::size_t component,
                                          std::size_t begin) {
  Byte* const first = planes + kElementSize * count * component + begin;
  return {first, first + count, first + 2 * count, first + 3 * count};
}

void Gather(const unsigned char* tuples, std::size_t width, std::size_t count,
            unsigned char* elements) {
  for (std::size_t i = 0; i < count; ++i) {
    std::memcpy(elements + kElementSize * i, tuples + kElementSize * width * i, kElementSize);
  }
}

void Scatter(const unsigned char* elements, std::size_t width, std::size_t count,
             unsigned char* tuples) {
  for (std::size_t i = 0; i < count; ++i) {
    std::memcpy(tuples + kElementSize * width * i, elements + kElementSize * i, kElementSize);
  }
}

/// Before: tuple 0 (component 0, 1, ...), tuple 1, ...
/// After:  component 0 (byte 0 of each tuple, byte 1 of each, 2, 3), component 1, ...
void ShuffleBytes(void* values, std::size_t size, std::size_t width) {
  const std::size_t count = width == 0 ? 0 : size / width;
  if (count == 0) return;
  const auto tuples = CopyBytes(values, kElementSize * width * count);
  auto* planes = static_cast<unsigned char*>(values);
  if (width == 1) return SplitPlanes(tuples.get(), count, GetPlanes(planes, count, 0, 0));
  const std::size_t tileSize = GetTileSize(width);
  std::vector<unsigned char> elements(kElementSize * tileSize);
  for (std::size_t begin = 0; begin < count; begin += tileSize) {
    const std::size_t n = std::min(tileSize, count - begin);
    const unsigned char* const tile = tuples.get() + kElementSize * width * begin;
    for (std::size_t component = 0; component < width; ++component) {
      Gather(tile + kElementSize * component, width, n, elements.data());
      SplitPlanes(elements.data(), n, GetPlanes(planes, count, component, begin));
    }
  }
}

/// Joins the planes of `n` tuples from tuple `begin` on, and writes the tuples to `tile`.
/// `elements` has room for the tuples.
void JoinTile(const unsigned char* planes, std::size_t width, std::size_t count, std::size_t begin,
              std::size_t n, unsigned char* elements, unsigned char* tile) {
  const bool areVectors = width == 3;
  for (std::size_t component = 0; component < width; ++component) {
    unsigned char* const joined = elements + (areVectors ? kElementSize * n * component : 0);
    JoinPlanes(GetPlanes(planes, count, component, begin), n, joined);
    if (!areVectors) Scatter(joined, width, n, tile + kElementSize * component);
  }
  if (areVectors) InterleaveThree(elements, n, tile);
}

/// Does not overlap its arguments. Copies the elements that do not fill a tuple.
void UnShuffleBytes(const unsigned char* planes, std::size_t size, std::size_t width,
                    void* values) {
  const std::size_t count = width == 0 ? 0 : size / width;
  auto* tuples = static_cast<unsigned char*>(values);
  if (width == 1) return JoinPlanes(GetPlanes(planes, count, 0, 0), count, tuples);
  const std::size_t numJoined = kElementSize * width * count;
  std::copy(planes + numJoined, planes + kElementSize * size, tuples + numJoined);
  if (count == 0) return;
  const std::size_t tileSize = GetTileSize(width);
  std::vector<unsigned char> elements(kElementSize * width * tileSize);
  for (std::size_t begin = 0; begin < count; begin += tileSize) {
    const std::size_t n = std::min(tileSize, count - begin);
    JoinTile(planes, width, count, begin, n, elements.data(),
             tuples + kElementSize * width * begin);
  }
}

}  // namespace

template <class T>
void ShuffleMultiVectorBytes(std::vector<T>& values, unsigned char width) {
  static_assert(sizeof(T) == kElementSize);
  ShuffleBytes(values.data(), values.size(), width);
}

template <class T>
void UnShuffleMultiVectorBytes(std::vector<T>& values, unsigned char width) {
  static_assert(sizeof(T) == kElementSize);
  const std::size_t count = width == 0 ? 0 : values.size() / width;
  if (count == 0) return;
  const auto planes = CopyBytes(values.data(), kElementSize * width * count);
  UnShuffleBytes(planes.get(), width * count, width, values.data());
}

template <class T>
void UnShuffleMultiVectorBytes(const unsigned char* shuffled, unsigned char width,
                               std::vector<T>& values) {
  static_assert(sizeof(T) == kElementSize);
  UnShuffleBytes(shuffled, values.size(), width, values.data());
}

template <class T>
void ShuffleVectorBytes(std::vector<T>& values) {
  ShuffleMultiVectorBytes(values, 1);
}

template <class T>
void UnShuffleVectorBytes(std::vector<T>& values) {
  UnShuffleMultiVectorBytes(values, 1);
}

template void ShuffleVectorBytes(std::vector<std::uint32_t>&);
template void ShuffleVectorBytes(std::vector<float>&);
template void UnShuffleVectorBytes(std::vector<std::uint32_t>&);
template void UnShuffleVectorBytes(std::vector<float>&);
template void ShuffleMultiVectorBytes(std::vector<std::uint32_t>&, unsigned char);
template void ShuffleMultiVectorBytes(std::vector<float>&, unsigned char);
template void UnShuffleMultiVectorBytes(std::vector<std::uint32_t>&, unsigned char);
template void UnShuffleMultiVectorBytes(std::vector<float>&, unsigned char);
template void UnShuffleMultiVectorBytes(const unsigned char*, unsigned char,
                                        std::vector<std::uint32_t>&);
template void UnShuffleMultiVectorBytes(const unsigned char*, unsigned char, std::vector<float>&);

}  // namespace QovUtil
