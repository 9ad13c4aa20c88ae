#include "Qov/Jbf/BlockIo.h"

#include <bit>

#include "ContainerFormat.h"
#include "Qov/Util/Raise.h"
#include "Sources.h"

namespace QovJbf {

using Qov::Util::RaiseNotEnoughBytes;
using Qov::Util::RaiseOutOfMemory;

namespace {

static_assert(std::endian::native == std::endian::little,
              "Values are stored as they lie in memory, which is right on little-endian machines");

template <class T>
void PutImage(Block& block, const T& value) {
  block.Put(&value, sizeof value);
}

template <class T>
void GetImage(Block& block, T& value) {
  block.Get(&value, sizeof value);
}

/// Returns the FNV-1a hash.
std::uint64_t HashOf(std::string_view bytes) {
  constexpr std::uint64_t kPrime = 0x100000001B3;
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * kPrime;
  return hash;
}

std::string GetCharacters(Block& block) {
  std::uint32_t length = 0;
  CopyFromBlock(block, length);
  Detail::CheckCount(block, length, 1);
  std::string characters(length, '\0');
  block.Get(characters.data(), length);
  return characters;
}

}  // namespace

void ReadLosses::AddEqualKey(std::string_view storedEntry) {
  ++mNumEqualKeys;
  mDigest += HashOf(storedEntry);
}

void ReadLosses::AddCutText(std::string_view storedText) {
  ++mNumCutTexts;
  mDigest += HashOf(storedText);
}

ReadLosses& ReadLosses::operator+=(const ReadLosses& other) {
  mNumEqualKeys += other.mNumEqualKeys;
  mNumCutTexts += other.mNumCutTexts;
  mDigest += other.mDigest;
  return *this;
}

ReadLosses operator-(const ReadLosses& left, const ReadLosses& right) {
  return {left.mNumEqualKeys - right.mNumEqualKeys, left.mNumCutTexts - right.mNumCutTexts,
          left.mDigest - right.mDigest};
}

ReadLosses& GetReadLosses() {
  static thread_local ReadLosses losses;
  return losses;
}

namespace Detail {

void CheckCount(const Block& block, std::uint64_t count, std::uint64_t leastSize) {
  if (count * leastSize > block.GetRemaining()) {
    RaiseNotEnoughBytes(kBlockSource);
  }
}

std::string_view GetBytesFrom(const Block& block, std::uint32_t start) {
  const char* bytes = reinterpret_cast<const char*>(block.GetData());
  if (bytes == nullptr) return {};
  return {bytes + start, block.GetPosition() - start};
}

void PutCount(Block& block, std::size_t count, std::size_t leastSize) {
  const std::uint64_t room = kLargestBlock - block.GetPosition();
  if (count > kLargestBlock || kCountSize + count * leastSize > room) {
    RaiseOutOfMemory(kBlockSource);
  }
  CopyToBlock(block, static_cast<std::uint32_t>(count));
}

}  // namespace Detail

void CopyToBlock(Block& block, const std::uint32_t& value) { PutImage(block, value); }
void CopyToBlock(Block& block, const std::int32_t& value) { PutImage(block, value); }
void CopyToBlock(Block& block, const std::uint64_t& value) { PutImage(block, value); }
void CopyToBlock(Block& block, const std::uint16_t& value) { PutImage(block, value); }
void CopyToBlock(Block& block, const std::uint8_t& value) { PutImage(block, value); }
void CopyToBlock(Block& block, const float& value) { PutImage(block, value); }
void CopyToBlock(Block& block, const double& value) { PutImage(block, value); }

void CopyToBlock(Block& block, const bool& value) {
  CopyToBlock(block, static_cast<std::uint8_t>(value ? 1 : 0));
}

void CopyToBlock(Block& block, const std::string& value) {
  Detail::PutCount(block, value.size(), 1);
  block.Put(value.data(), static_cast<std::uint32_t>(value.size()));
}

void CopyToBlock(Block& block, const std::wstring& value) {
  std::string narrow;
  narrow.reserve(value.size());
  for (const wchar_t character : value) narrow.push_back(static_cast<char>(character & 0xFF));
  CopyToBlock(block, narrow);
}

void CopyToBlock(Block& block, const QovRyx::Vector2& value) {
  for (const float part : {value.mX, value.mY}) CopyToBlock(block, part);
}

void CopyToBlock(Block& block, const QovRyx::Vector3& value) {
  for (const float part : {value.mX, value.mY, value.mZ}) CopyToBlock(block, part);
}

void CopyToBlock(Block& block, const QovRyx::ColourValue& value) {
  for (const float part : {value.mR, value.mG, value.mB, value.mA}) CopyToBlock(block, part);
}

void CopyToBlock(Block& block, const QovRyx::Quaternion& value) {
  for (const float part : {value.mX, value.mY, value.mZ, value.mW}) CopyToBlock(block, part);
}

void CopyFromBlock(Block& block, std::uint32_t& value) { GetImage(block, value); }
void CopyFromBlock(Block& block, std::int32_t& value) { GetImage(block, value); }
void CopyFromBlock(Block& block, std::uint64_t& value) { GetImage(block, value); }
void CopyFromBlock(Block& block, std::uint16_t& value) { GetImage(block, value); }
void CopyFromBlock(Block& block, std::uint8_t& value) { GetImage(block, value); }
void CopyFromBlock(Block& block, float& value) { GetImage(block, value); }
void CopyFromBlock(Block& block, double& value) { GetImage(block, value); }

void CopyFromBlock(Block& block, bool& value) {
  std::uint8_t byte = 0;
  CopyFromBlock(block, byte);
  value = byte != 0;
}

void CopyFromBlock(Block& block, std::string& value) {
  const std::string characters = GetCharacters(block);
  if (characters.empty()) return;
  value = characters.substr(0, characters.find('\0'));
  if (characters.find_first_not_of('\0', value.size()) != std::string::npos) {
    GetReadLosses().AddCutText(characters);
  }
}

void CopyFromBlock(Block& block, std::wstring& value) {
  std::string narrow;
  CopyFromBlock(block, narrow);
  value.clear();
  for (const char character : narrow) {
    value.push_back(static_cast<wchar_t>(static_cast<signed char>(character)));
  }
}

void CopyFromBlock(Block& block, QovRyx::Vector2& value) {
  for (float* part : {&value.mX, &value.mY}) CopyFromBlock(block, *part);
}

void CopyFromBlock(Block& block, QovRyx::Vector3& value) {
  for (float* part : {&value.mX, &value.mY, &value.mZ}) CopyFromBlock(block, *part);
}

void CopyFromBlock(Block& block, QovRyx::ColourValue& value) {
  for (float* part : {&value.mR, &value.mG, &value.mB, &value.mA}) CopyFromBlock(block, *part);
}

void CopyFromBlock(Block& block, QovRyx::Quaternion& value) {
  for (float* part : {&value.mX, &value.mY, &value.mZ, &value.mW}) CopyFromBlock(block, *part);
}

}  // namespace QovJbf
