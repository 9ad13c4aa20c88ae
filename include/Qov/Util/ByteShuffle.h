#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Qov/Export.h"

/// Byte-plane shuffling of arrays of 4-byte elements. Equal high-order bytes come to lie side by
/// side, so that shuffled arrays compress much better. docs/format.md draws the layouts.
namespace QovUtil {

/// Element i, byte b goes to offset b * n + i of the n elements. T is uint32_t or float.
template <class T>
void ShuffleVectorBytes(std::vector<T>& values);
template <class T>
void UnShuffleVectorBytes(std::vector<T>& values);

/// The same for interleaved tuples of `width` components: each component is gathered and
/// shuffled alone, the components follow one another, and the size % width last elements stay
/// where they are. Width 0 leaves the array alone.
template <class T>
void ShuffleMultiVectorBytes(std::vector<T>& values, unsigned char width);
template <class T>
void UnShuffleMultiVectorBytes(std::vector<T>& values, unsigned char width);

extern template QOV_EXPORT void ShuffleVectorBytes(std::vector<std::uint32_t>&);
extern template QOV_EXPORT void ShuffleVectorBytes(std::vector<float>&);
extern template QOV_EXPORT void UnShuffleVectorBytes(std::vector<std::uint32_t>&);
extern template QOV_EXPORT void UnShuffleVectorBytes(std::vector<float>&);
extern template QOV_EXPORT void ShuffleMultiVectorBytes(std::vector<std::uint32_t>&, unsigned char);
extern template QOV_EXPORT void ShuffleMultiVectorBytes(std::vector<float>&, unsigned char);
extern template QOV_EXPORT void UnShuffleMultiVectorBytes(std::vector<std::uint32_t>&,
                                                          unsigned char);
extern template QOV_EXPORT void UnShuffleMultiVectorBytes(std::vector<float>&, unsigned char);

}  // namespace QovUtil
