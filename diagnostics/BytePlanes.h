#pragma once

#include <array>
#include <cstddef>

/// The kernels of byte shuffling: elements of 4 bytes that lie one behind the other, and the
/// planes of their first, second, third and fourth bytes. Nothing overlaps.
namespace QovUtil {

inline constexpr std::size_t kElementSize = 4;
using Planes = std::array<unsigned char*, kElementSize>;
using ConstPlanes = std::array<const unsigned char*, kElementSize>;

/// Byte b of element i goes to planes[b][i].
void SplitPlanes(const unsigned char* elements, std::size_t count, const Planes& planes);
/// The inverse.
void JoinPlanes(const ConstPlanes& planes, std::size_t count, unsigned char* elements);

/// The same for the elements from `begin` on, one at a time.
void SplitPlanesPlainly(const unsigned char* elements, std::size_t begin, std::size_t count,
                        const Planes& planes);
void JoinPlanesPlainly(const ConstPlanes& planes, std::size_t begin, std::size_t count,
                       unsigned char* elements);

}  // namespace QovUtil
