#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Byte-plane shuffling of arrays of 4-byte elements. It puts bytes of the same significance side
/// by side, so that arrays compress much better. docs/format.md draws the layouts.
namespace QovUtil {

/// Moves byte b of element i to offset b * n + i, where n is the number of elements. T is uint32_t
/// or float.
template <class T>
void ShuffleVectorBytes(std::vector<T>& values);
template <class T>
void UnShuffleVectorBytes(std::vector<T>& values);

/// Shuffles an array of tuples of `width` components. Each component is gathered and shuffled
/// separately, and the components follow one another. The last size % width elements stay in place.
/// Width 0 changes nothing.
template <class T>
void ShuffleMultiVectorBytes(std::vector<T>& values, unsigned char width);
template <class T>
void UnShuffleMultiVectorBytes(std::vector<T>& values, unsigned char width);
/// Fills `values`, whose size is unchanged, from as many shuffled elements.
template <class T>
void UnShuffleMultiVectorBytes(const unsigned char* shuffled, unsigned char width,
                               std::vector<T>& values);

extern template void ShuffleVectorBytes(std::vector<std::uint32_t>&);
extern template void ShuffleVectorBytes(std::vector<float>&);
extern template void UnShuffleVectorBytes(std::vector<std::uint32_t>&);
extern template void UnShuffleVectorBytes(std::vector<float>&);
extern template void ShuffleMultiVectorBytes(std::vector<std::uint32_t>&, unsigned char);
extern template void ShuffleMultiVectorBytes(std::vector<float>&, unsigned char);
extern template void UnShuffleMultiVectorBytes(std::vector<std::uint32_t>&, unsigned char);
extern template void UnShuffleMultiVectorBytes(std::vector<float>&, unsigned char);
extern template void UnShuffleMultiVectorBytes(const unsigned char*, unsigned char,
                                               std::vector<std::uint32_t>&);
extern template void UnShuffleMultiVectorBytes(const unsigned char*, unsigned char,
                                               std::vector<float>&);

}  // namespace QovUtil
