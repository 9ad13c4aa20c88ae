#include "html/PageBuffers.h"

#include <fmt/format.h>
#define XXH_INLINE_ALL
#include <xxhash.h>
#include <zlib.h>

#include <nlohmann/json.hpp>
#include <string_view>

#include "Qov/Util/Raise.h"

namespace Qov::Tools {
namespace {

constexpr const char* kSource = "tools/html/PageBuffers";
constexpr int kLevel = 9;
/// Greatest size of what surrounds an array in the page and in the manifest.
constexpr std::uint64_t kFrameSize = 200;

std::string Compress(const std::string& bytes) {
  uLongf size = compressBound(bytes.size());
  std::string compressed(size, '\0');
  const int status = compress2(reinterpret_cast<Bytef*>(compressed.data()), &size,
                               reinterpret_cast<const Bytef*>(bytes.data()), bytes.size(), kLevel);
  if (status != Z_OK) Util::RaiseOutOfMemory(kSource);
  compressed.resize(size);
  compressed.shrink_to_fit();
  return compressed;
}

std::pair<std::uint64_t, std::uint64_t> HashOf(const std::string& bytes) {
  const XXH128_hash_t hash = XXH3_128bits(bytes.data(), bytes.size());
  return {hash.low64, hash.high64};
}

}  // namespace

PageBuffer::PageBuffer(std::size_t count, const char* coding, const std::string& bytes)
    : mCount(count), mCoding(coding), mCompressed(Compress(bytes)) {}

Json PageBuffers::Add(PageItem item) {
  std::uint64_t size = item.mJson.dump(-1, ' ', true).size();
  for (const auto& [name, buffer] : item.mBuffers) {
    size += kFrameSize;
    const bool isNew = buffer && !mNumbers.contains(HashOf(buffer->mCompressed));
    if (isNew) size += (buffer->mCompressed.size() + 2) / 3 * 4;
  }
  if (mSpent + size > mBudget) return nullptr;
  mSpent += size;
  for (const auto& [name, buffer] : item.mBuffers) {
    Json& member = item.mJson[name];
    member = nullptr;
    if (!buffer) continue;
    member = {{"data", Write(*buffer)}, {"count", buffer->mCount}, {"coding", buffer->mCoding}};
  }
  return std::move(item.mJson);
}

std::size_t PageBuffers::Write(const PageBuffer& buffer) {
  const auto [entry, isNew] = mNumbers.try_emplace(HashOf(buffer.mCompressed), mNumbers.size());
  if (!isNew) return entry->second;
  const std::string begin =
      fmt::format("<script type=\"application/octet-stream\" id=\"data-{}\">", entry->second);
  const std::string text = begin + Base64(buffer.mCompressed) + "</script>\n";
  mBytes.Append(text.data(), text.size());
  return entry->second;
}

std::string Base64(const std::string& bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      group = group << 8U | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += i + k <= bytes.size() ? kDigits[group >> (18 - 6 * k) & 63U] : '=';
    }
  }
  return text;
}

}  // namespace Qov::Tools
