#include "BytePlanes.h"

#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace QovUtil {

void SplitPlanesPlainly(const unsigned char* elements, std::size_t begin, std::size_t count,
                        const Planes& planes) {
  for (std::size_t i = begin; i < count; ++i) {
    for (std::size_t b = 0; b < kElementSize; ++b) planes[b][i] = elements[kElementSize * i + b];
  }
}

void JoinPlanesPlainly(const ConstPlanes& planes, std::size_t begin, std::size_t count,
                       unsigned char* elements) {
  for (std::size_t i = begin; i < count; ++i) {
    for (std::size_t b = 0; b < kElementSize; ++b) elements[kElementSize * i + b] = planes[b][i];
  }
}

namespace {

void InterleaveThreePlainly(const unsigned char* components, std::size_t begin, std::size_t count,
                            unsigned char* tuples) {
  for (std::size_t i = begin; i < count; ++i) {
    for (std::size_t c = 0; c < 3; ++c) {
      std::memcpy(tuples + kElementSize * (3 * i + c), components + kElementSize * (c * count + i),
                  kElementSize);
    }
  }
}

}  // namespace

#ifdef __SSE2__

namespace {

/// Number of elements that fill four registers. Each of their planes fills one register.
constexpr std::size_t kStep = 16;

/// The registers of kStep elements.
struct Registers {
  __m128i mParts[4];  // NOLINT(modernize-avoid-c-arrays): std::array drops attributes of it
};

__m128i Load(const unsigned char* bytes) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

void Store(unsigned char* bytes, __m128i value) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), value);
}

/// Returns the lowest byte of each element.
__m128i PackLowBytes(const Registers& elements) {
  const __m128i mask = _mm_set1_epi32(0xFF);
  const auto packPair = [&](std::size_t i) {
    return _mm_packs_epi32(_mm_and_si128(elements.mParts[i], mask),
                           _mm_and_si128(elements.mParts[i + 1], mask));
  };
  return _mm_packus_epi16(packPair(0), packPair(2));
}

__m128 LoadFour(const unsigned char* bytes) { return _mm_castsi128_ps(Load(bytes)); }

void StoreFour(unsigned char* bytes, __m128 value) { Store(bytes, _mm_castps_si128(value)); }

/// Returns two copies of element kLeft of `left` and two of element kRight of `right`.
template <int kLeft, int kRight>
__m128 Pick(__m128 left, __m128 right) {
  return _mm_shuffle_ps(left, right, _MM_SHUFFLE(kRight, kRight, kLeft, kLeft));
}

/// Returns elements 0 and 2 of `left`, and then of `right`.
__m128 MergePairs(__m128 left, __m128 right) {
  return _mm_shuffle_ps(left, right, _MM_SHUFFLE(2, 0, 2, 0));
}

}  // namespace

void SplitPlanes(const unsigned char* elements, std::size_t count, const Planes& planes) {
  std::size_t i = 0;
  for (; i + kStep <= count; i += kStep) {
    Registers step;  // NOLINT(cppcoreguidelines-pro-type-member-init): all are loaded next
    for (std::size_t r = 0; r < 4; ++r) step.mParts[r] = Load(elements + kElementSize * i + 16 * r);
    for (std::size_t b = 0; b < kElementSize; ++b) {
      Store(planes[b] + i, PackLowBytes(step));
      for (__m128i& part : step.mParts) part = _mm_srli_epi32(part, 8);
    }
  }
  SplitPlanesPlainly(elements, i, count, planes);
}

void JoinPlanes(const ConstPlanes& planes, std::size_t count, unsigned char* elements) {
  std::size_t i = 0;
  for (; i + kStep <= count; i += kStep) {
    const __m128i byte0 = Load(planes[0] + i);
    const __m128i byte1 = Load(planes[1] + i);
    const __m128i byte2 = Load(planes[2] + i);
    const __m128i byte3 = Load(planes[3] + i);
    const __m128i low01 = _mm_unpacklo_epi8(byte0, byte1);
    const __m128i low23 = _mm_unpacklo_epi8(byte2, byte3);
    const __m128i high01 = _mm_unpackhi_epi8(byte0, byte1);
    const __m128i high23 = _mm_unpackhi_epi8(byte2, byte3);
    unsigned char* const target = elements + kElementSize * i;
    Store(target, _mm_unpacklo_epi16(low01, low23));
    Store(target + 16, _mm_unpackhi_epi16(low01, low23));
    Store(target + 32, _mm_unpacklo_epi16(high01, high23));
    Store(target + 48, _mm_unpackhi_epi16(high01, high23));
  }
  JoinPlanesPlainly(planes, i, count, elements);
}

/// Moves the elements as floats, which does not change their bits.
void InterleaveThree(const unsigned char* components, std::size_t count, unsigned char* tuples) {
  constexpr std::size_t kFour = 4;
  std::size_t i = 0;
  for (; i + kFour <= count; i += kFour) {
    const unsigned char* const source = components + kElementSize * i;
    const __m128 x = LoadFour(source);
    const __m128 y = LoadFour(source + kElementSize * count);
    const __m128 z = LoadFour(source + 2 * kElementSize * count);
    unsigned char* const target = tuples + 3 * kElementSize * i;
    StoreFour(target, MergePairs(Pick<0, 0>(x, y), Pick<0, 1>(z, x)));
    StoreFour(target + 16, MergePairs(Pick<1, 1>(y, z), Pick<2, 2>(x, y)));
    StoreFour(target + 32, MergePairs(Pick<2, 3>(z, x), Pick<3, 3>(y, z)));
  }
  InterleaveThreePlainly(components, i, count, tuples);
}

#else

void SplitPlanes(const unsigned char* elements, std::size_t count, const Planes& planes) {
  SplitPlanesPlainly(elements, 0, count, planes);
}

void JoinPlanes(const ConstPlanes& planes, std::size_t count, unsigned char* elements) {
  JoinPlanesPlainly(planes, 0, count, elements);
}

void InterleaveThree(const unsigned char* components, std::size_t count, unsigned char* tuples) {
  InterleaveThreePlainly(components, 0, count, tuples);
}

#endif

}  // namespace QovUtil
