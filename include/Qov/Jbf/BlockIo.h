#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Qov/Jbf/Block.h"
#include "Qov/Jbf/ValueTypes.h"

/// How values lie in a block: little-endian raw images at the cursor, without padding or tags.
///
///   unsigned int, int, float   4 bytes
///   double                     8 bytes
///   bool                       1 byte, 0 or 1; any other value reads as true
///   unsigned char              1 byte as it is, also for flags that are only carried
///   Vector2, Vector3, ...      their floats
///   string                     u32 length, then the bytes
///   wstring                    as a string of the characters' low bytes
///   array<T, N>                N encoded elements, no count
///   vector<T>                  u32 count, then the elements
///   map<K, V>                  u32 count, then key and value of each entry in key order
///
/// Reading a string of length 0 leaves the target as it was; a zero byte within a string ends
/// it. Counts and lengths are compared with the bytes that are left before memory is taken for
/// them ("Not enough bytes in the block", OutOfBounds).
///
/// Types of other modules join by overloading CopyToBlock and CopyFromBlock in this namespace.
namespace QovJbf {

void CopyToBlock(Block& block, const std::uint32_t& value);
void CopyToBlock(Block& block, const std::int32_t& value);
void CopyToBlock(Block& block, const std::uint64_t& value);
void CopyToBlock(Block& block, const std::uint16_t& value);
void CopyToBlock(Block& block, const std::uint8_t& value);
void CopyToBlock(Block& block, const float& value);
void CopyToBlock(Block& block, const double& value);
void CopyToBlock(Block& block, const bool& value);
void CopyToBlock(Block& block, const std::string& value);
void CopyToBlock(Block& block, const std::wstring& value);
void CopyToBlock(Block& block, const QovRyx::Vector2& value);
void CopyToBlock(Block& block, const QovRyx::Vector3& value);
void CopyToBlock(Block& block, const QovRyx::ColourValue& value);
void CopyToBlock(Block& block, const QovRyx::Quaternion& value);

void CopyFromBlock(Block& block, std::uint32_t& value);
void CopyFromBlock(Block& block, std::int32_t& value);
void CopyFromBlock(Block& block, std::uint64_t& value);
void CopyFromBlock(Block& block, std::uint16_t& value);
void CopyFromBlock(Block& block, std::uint8_t& value);
void CopyFromBlock(Block& block, float& value);
void CopyFromBlock(Block& block, double& value);
void CopyFromBlock(Block& block, bool& value);
void CopyFromBlock(Block& block, std::string& value);
void CopyFromBlock(Block& block, std::wstring& value);
void CopyFromBlock(Block& block, QovRyx::Vector2& value);
void CopyFromBlock(Block& block, QovRyx::Vector3& value);
void CopyFromBlock(Block& block, QovRyx::ColourValue& value);
void CopyFromBlock(Block& block, QovRyx::Quaternion& value);

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

// To be filled in by the owner of this file: the templates' bodies.

}  // namespace QovJbf
