#pragma once

#include <array>
#include <cstddef>

/// The kernels of byte shuffling. An array has elements of 4 bytes; a plane has the first, second,
/// third or fourth byte of each element. The arguments must not overlap.
namespace QovUtil {

inline constexpr std::size_t kElementSize = 4;
using Planes = std::array<unsigned char*, kElementSize>;
using ConstPlanes = std::array<const unsigned char*, kElementSize>;

/// Copies byte b of element i to planes[b][i].
void SplitPlanes(const unsigned char* elements, std::size_t count, const Planes& planes);
/// Copies planes[b][i] to byte b of element i.
void JoinPlanes(const ConstPlanes& planes, std::size_t count, unsigned char* elements);

/// Makes `count` tuples of three elements. Element i of component c is element c * count + i of
/// `components`.
void InterleaveThree(const unsigned char* components, std::size_t count, unsigned char* tuples);

/// Do the same as SplitPlanes and JoinPlanes for the elements from `begin` on, one at a time.
void SplitPlanesPlainly(const unsigned char* elements, std::size_t begin, std::size_t count,
                        const Planes& planes);
void JoinPlanesPlainly(const ConstPlanes& planes, std::size_t begin, std::size_t count,
                       unsigned char* elements);

}  // namespace QovUtil
