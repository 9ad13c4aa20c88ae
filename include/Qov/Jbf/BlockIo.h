#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Jbf/Block.h"
#include "Qov/Jbf/ValueTypes.h"

/// The encoding of values in a block. Values are stored at the cursor, little-endian, without
/// padding and without tags:
///
///   unsigned int, int, float   4 bytes
///   double                     8 bytes
///   bool                       1 byte, 0 or 1; any other value reads as true
///   unsigned char              1 byte, any value
///   Vector2, Vector3, ...      their floats
///   string                     u32 length, then the bytes
///   wstring                    a string of the low bytes of the characters
///   array<T, N>                N encoded elements, no count
///   vector<T>                  u32 count, then the elements
///   map<K, V>                  u32 count, then key and value of each entry in key order
///
/// Reading: A string of length 0 leaves the target as it is; a wstring of length 0 empties it. A
/// zero byte in a string ends it. Bytes of a wstring from 0x80 on become negative characters. The
/// present elements of a vector are reused. If several entries of a map have equal keys, the first
/// one is kept. A count or length that the remaining bytes cannot hold raises OutOfBounds ("Not
/// enough bytes in the block") before memory is allocated.
///
/// Other modules add types by overloads of CopyToBlock and CopyFromBlock in this namespace.
namespace QovJbf {

/// Counts of stored data that was not read, because the values cannot hold it.
struct QOV_EXPORT ReadLosses {
  std::uint64_t mNumEqualKeys = 0;  ///< Map entries with the key of an earlier entry.
  std::uint64_t mNumCutTexts = 0;   ///< Texts with bytes after a zero byte.
  std::uint64_t mDigest = 0;        ///< Sum of the hashes of the stored bytes.

  void AddEqualKey(std::string_view storedEntry);
  void AddCutText(std::string_view storedText);

  bool HasAny() const { return mNumEqualKeys != 0 || mNumCutTexts != 0; }
  ReadLosses& operator+=(const ReadLosses& other);
  friend QOV_EXPORT ReadLosses operator-(const ReadLosses& left, const ReadLosses& right);
  friend bool operator==(const ReadLosses&, const ReadLosses&) = default;
};

/// Returns the losses of this thread since its start. Readers of files use the difference of two
/// calls.
QOV_EXPORT ReadLosses& GetReadLosses();

QOV_EXPORT void CopyToBlock(Block& block, const std::uint32_t& value);
QOV_EXPORT void CopyToBlock(Block& block, const std::int32_t& value);
QOV_EXPORT void CopyToBlock(Block& block, const std::uint64_t& value);
QOV_EXPORT void CopyToBlock(Block& block, const std::uint16_t& value);
QOV_EXPORT void CopyToBlock(Block& block, const std::uint8_t& value);
QOV_EXPORT void CopyToBlock(Block& block, const float& value);
QOV_EXPORT void CopyToBlock(Block& block, const double& value);
QOV_EXPORT void CopyToBlock(Block& block, const bool& value);
QOV_EXPORT void CopyToBlock(Block& block, const std::string& value);
QOV_EXPORT void CopyToBlock(Block& block, const std::wstring& value);
QOV_EXPORT void CopyToBlock(Block& block, const QovRyx::Vector2& value);
QOV_EXPORT void CopyToBlock(Block& block, const QovRyx::Vector3& value);
QOV_EXPORT void CopyToBlock(Block& block, const QovRyx::ColourValue& value);
QOV_EXPORT void CopyToBlock(Block& block, const QovRyx::Quaternion& value);
/// Deleted, because a literal would be converted to bool.
void CopyToBlock(Block& block, const char* value) = delete;

QOV_EXPORT void CopyFromBlock(Block& block, std::uint32_t& value);
QOV_EXPORT void CopyFromBlock(Block& block, std::int32_t& value);
QOV_EXPORT void CopyFromBlock(Block& block, std::uint64_t& value);
QOV_EXPORT void CopyFromBlock(Block& block, std::uint16_t& value);
QOV_EXPORT void CopyFromBlock(Block& block, std::uint8_t& value);
QOV_EXPORT void CopyFromBlock(Block& block, float& value);
QOV_EXPORT void CopyFromBlock(Block& block, double& value);
QOV_EXPORT void CopyFromBlock(Block& block, bool& value);
QOV_EXPORT void CopyFromBlock(Block& block, std::string& value);
QOV_EXPORT void CopyFromBlock(Block& block, std::wstring& value);
QOV_EXPORT void CopyFromBlock(Block& block, QovRyx::Vector2& value);
QOV_EXPORT void CopyFromBlock(Block& block, QovRyx::Vector3& value);
QOV_EXPORT void CopyFromBlock(Block& block, QovRyx::ColourValue& value);
QOV_EXPORT void CopyFromBlock(Block& block, QovRyx::Quaternion& value);

template <class T, std::size_t N>
void CopyToBlock(Block& block, const std::array<T, N>& values);
template <class T, std::size_t N>
void CopyFromBlock(Block& block, std::array<T, N>& values);
template <class T>
void CopyToBlock(Block& block, const std::vector<T>& values);
template <class T>
void CopyFromBlock(Block& block, std::vector<T>& values);
template <class A, class B>
void CopyToBlock(Block& block, const std::pair<A, B>& value);
template <class A, class B>
void CopyFromBlock(Block& block, std::pair<A, B>& value);
template <class K, class V>
void CopyToBlock(Block& block, const std::map<K, V>& values);
template <class K, class V>
void CopyFromBlock(Block& block, std::map<K, V>& values);

/// Minimum number of bytes of an encoded T, 0 if it is not known. Counts are checked with it. Other
/// modules can specialise it for their types.
template <class T>
inline constexpr std::size_t kLeastEncodedSize = std::is_arithmetic_v<T> ? sizeof(T) : 0;
template <>
inline constexpr std::size_t kLeastEncodedSize<std::string> = sizeof(std::uint32_t);
template <>
inline constexpr std::size_t kLeastEncodedSize<std::wstring> = sizeof(std::uint32_t);
template <class T>
inline constexpr std::size_t kLeastEncodedSize<std::vector<T>> = sizeof(std::uint32_t);
template <class K, class V>
inline constexpr std::size_t kLeastEncodedSize<std::map<K, V>> = sizeof(std::uint32_t);
template <class A, class B>
inline constexpr std::size_t kLeastEncodedSize<std::pair<A, B>> =
    kLeastEncodedSize<A> + kLeastEncodedSize<B>;
template <class T, std::size_t N>
inline constexpr std::size_t kLeastEncodedSize<std::array<T, N>> = N* kLeastEncodedSize<T>;

namespace Detail {

/// True if an array of T in memory has the same bytes as its encoded elements.
template <class T>
inline constexpr bool kIsRawElement = std::is_arithmetic_v<T> && !std::is_same_v<T, bool>;

/// Raises OutOfBounds if the remaining bytes cannot hold `count` elements of at least `leastSize`
/// bytes.
QOV_EXPORT void CheckCount(const Block& block, std::uint64_t count, std::uint64_t leastSize);
/// Writes a count. Raises MemoryAllocationError if a block cannot hold that many elements of at
/// least `leastSize` bytes.
QOV_EXPORT void PutCount(Block& block, std::size_t count, std::size_t leastSize);

/// Returns the bytes from `start` to the cursor.
QOV_EXPORT std::string_view GetBytesFrom(const Block& block, std::uint32_t start);

template <class T>
std::uint32_t GetCount(Block& block) {
  std::uint32_t count = 0;
  CopyFromBlock(block, count);
  CheckCount(block, count, kLeastEncodedSize<T>);
  return count;
}

}  // namespace Detail

template <class T, std::size_t N>
void CopyToBlock(Block& block, const std::array<T, N>& values) {
  for (const T& value : values) CopyToBlock(block, value);
}

template <class T, std::size_t N>
void CopyFromBlock(Block& block, std::array<T, N>& values) {
  for (T& value : values) CopyFromBlock(block, value);
}

template <class T>
void CopyToBlock(Block& block, const std::vector<T>& values) {
  Detail::PutCount(block, values.size(), kLeastEncodedSize<T>);
  if constexpr (Detail::kIsRawElement<T>) {
    block.Put(values.data(), static_cast<std::uint32_t>(values.size() * sizeof(T)));
  } else {
    for (const T& value : values) CopyToBlock(block, value);
  }
}

template <class T>
void CopyFromBlock(Block& block, std::vector<T>& values) {
  const std::uint32_t count = Detail::GetCount<T>(block);
  if constexpr (Detail::kIsRawElement<T>) {
    values.resize(count);
    block.Get(values.data(), static_cast<std::uint32_t>(count * sizeof(T)));
  } else {
    // The vector grows element by element, so that a wrong count fails before it takes memory.
    if (values.size() > count) values.resize(count);
    for (std::uint32_t i = 0; i < count; ++i) {
      if (i == values.size()) values.emplace_back();
      CopyFromBlock(block, values[i]);
    }
  }
}

template <class A, class B>
void CopyToBlock(Block& block, const std::pair<A, B>& value) {
  CopyToBlock(block, value.first);
  CopyToBlock(block, value.second);
}

template <class A, class B>
void CopyFromBlock(Block& block, std::pair<A, B>& value) {
  CopyFromBlock(block, value.first);
  CopyFromBlock(block, value.second);
}

template <class K, class V>
void CopyToBlock(Block& block, const std::map<K, V>& values) {
  Detail::PutCount(block, values.size(), kLeastEncodedSize<std::pair<K, V>>);
  for (const auto& [key, value] : values) {
    CopyToBlock(block, key);
    CopyToBlock(block, value);
  }
}

template <class K, class V>
void CopyFromBlock(Block& block, std::map<K, V>& values) {
  const std::uint32_t count = Detail::GetCount<std::pair<K, V>>(block);
  values.clear();
  for (std::uint32_t i = 0; i < count; ++i) {
    std::pair<K, V> entry{};
    const std::uint32_t start = block.GetPosition();
    CopyFromBlock(block, entry);
    const bool isNew = values.insert(std::move(entry)).second;
    if (!isNew) GetReadLosses().AddEqualKey(Detail::GetBytesFrom(block, start));
  }
}

}  // namespace QovJbf
