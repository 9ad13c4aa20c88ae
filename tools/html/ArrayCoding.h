#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// The codings of the arrays of a page. They make the arrays shorter when they are compressed. The
/// script of the page decodes them, in the browser.
namespace Qov::Tools {

/// The greatest code of a value that is a number; the next one stands for all others.
inline constexpr std::uint16_t kGreatestCode = 65534;
inline constexpr std::uint16_t kNoNumberCode = 65535;

/// The least and the greatest finite value of an array.
struct FiniteRange {
  explicit FiniteRange(std::span<const float> values);

  bool mIsEmpty = true;
  float mLeast = 0.0F;  ///< 0, like the next one, if no value is finite.
  float mGreatest = 0.0F;
};

/// Returns a code of 16 bits for each value: 0 to `greatestCode` for the least to the greatest of
/// the range in equal steps, kNoNumberCode for a value that is not finite.
std::vector<std::uint16_t> Quantize(std::span<const float> values, const FiniteRange& range,
                                    std::uint16_t greatestCode = kGreatestCode);

/// Replaces values by their differences to the one before, modulo 65536. The first one stays.
void TakeDifferences(std::span<std::uint16_t> values);

/// Appends the low bytes of all values, then all high bytes.
void AppendBytePlanes(std::span<const std::uint16_t> values, std::string& bytes);

/// Appends the lowest bytes of all values, then the next ones, in four planes.
void AppendBytePlanes(std::span<const float> values, std::string& bytes);

/// Appends the difference of each value to the one before, from 0, modulo 2^32. A difference is
/// stored as a zigzag number (0, -1, 1, -2, ... are 0, 1, 2, 3, ...) of 7 bits a byte, the lowest
/// first; all bytes but its last one have the bit 0x80.
void AppendDifferences(std::span<const std::uint32_t> values, std::string& bytes);

/// Appends numbers of points that are numbered in the order of their first use: the number of used
/// points minus each number, of 7 bits a byte like above. So a point that is used first is 0.
void AppendIndices(std::span<const std::uint32_t> indices, std::string& bytes);

}  // namespace Qov::Tools
