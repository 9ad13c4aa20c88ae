#include "Qov/Util/ByteShuffle.h"

#include <cstring>
#include <memory>
#include <new>

#include "Qov/Util/Raise.h"

namespace QovUtil {
namespace {

constexpr const char* kSource = "include/Qov/Util/ByteShuffle";
constexpr std::size_t kElementSize = 4;

/// A copy of the first `size` bytes of an array, from which it is then filled again.
std::unique_ptr<unsigned char[]> CopyBytes(const void* bytes, std::size_t size) {
  std::unique_ptr<unsigned char[]> copy(new (std::nothrow) unsigned char[size]);
  if (!copy) Qov::Util::Raise(kSource, Qov::Util::Exception::ErrorType::MemoryAllocationError);
  std::memcpy(copy.get(), bytes, size);
  return copy;
}

/// Spreads `count` elements that lie `stride` bytes apart over four planes of `count` bytes.
void SplitPlanes(const unsigned char* elements, std::size_t stride, std::size_t count,
                 unsigned char* planes) {
  unsigned char* const plane1 = planes + count;
  unsigned char* const plane2 = plane1 + count;
  unsigned char* const plane3 = plane2 + count;
  for (std::size_t i = 0; i < count; ++i, elements += stride) {
    planes[i] = elements[0];
    plane1[i] = elements[1];
    plane2[i] = elements[2];
    plane3[i] = elements[3];
  }
}

/// The inverse of SplitPlanes.
void JoinPlanes(const unsigned char* planes, std::size_t count, unsigned char* elements,
                std::size_t stride) {
  const unsigned char* const plane1 = planes + count;
  const unsigned char* const plane2 = plane1 + count;
  const unsigned char* const plane3 = plane2 + count;
  for (std::size_t i = 0; i < count; ++i, elements += stride) {
    elements[0] = planes[i];
    elements[1] = plane1[i];
    elements[2] = plane2[i];
    elements[3] = plane3[i];
  }
}

/// Before: tuple 0 (component 0, 1, ...), tuple 1, ...
/// After:  component 0 (byte 0 of each tuple, byte 1 of each, 2, 3), component 1, ...
void ShuffleBytes(void* values, std::size_t size, std::size_t width) {
  const std::size_t count = width == 0 ? 0 : size / width;
  if (count == 0) return;
  const std::size_t planesSize = kElementSize * count;
  const auto tuples = CopyBytes(values, width * planesSize);
  auto* planes = static_cast<unsigned char*>(values);
  for (std::size_t component = 0; component < width; ++component) {
    SplitPlanes(tuples.get() + kElementSize * component, kElementSize * width, count,
                planes + planesSize * component);
  }
}

void UnShuffleBytes(void* values, std::size_t size, std::size_t width) {
  const std::size_t count = width == 0 ? 0 : size / width;
  if (count == 0) return;
  const std::size_t planesSize = kElementSize * count;
  const auto planes = CopyBytes(values, width * planesSize);
  auto* tuples = static_cast<unsigned char*>(values);
  for (std::size_t component = 0; component < width; ++component) {
    JoinPlanes(planes.get() + planesSize * component, count, tuples + kElementSize * component,
               kElementSize * width);
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
  UnShuffleBytes(values.data(), values.size(), width);
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

}  // namespace QovUtil
