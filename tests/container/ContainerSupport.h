#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <random>
#include <string>

#include "Qov/Jbf/JbFile.h"
#include "support/CapturedErrors.h"
#include "support/Errors.h"
#include "support/Files.h"
#include "support/ScopedEnvironment.h"
#include "support/Streams.h"
#include "support/TempDir.h"

namespace Qov::Test {

inline constexpr const char* kLimitVariable = "TELMORAX_MAX_RYX_BLOCK_SIZE";
inline constexpr const char* kGrowthVariable = "TELMORAX_DEFAULT_RYX_BLOCK_SIZE";
inline constexpr const char* kThreadsVariable = "RYXMERGE_THREADS";

inline constexpr const char* kStream = "Heavy Data";
inline constexpr std::uint8_t kHeavy =
    QovJbf::BlockFlag::kCompressed | QovJbf::BlockFlag::kFreezeWhenFull;

/// Returns bytes that compress to about half; equal bytes for equal seeds.
inline std::string SomeBytes(std::size_t n, unsigned seed) {
  std::mt19937 random(seed);
  std::string bytes(n, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random() % 16);
  return bytes;
}

/// Writes a container; `fill` puts its streams.
inline void WriteContainer(const std::string& path,
                           const std::function<void(QovJbf::JbFile&)>& fill) {
  std::filesystem::remove(path);
  QovJbf::JbFile file;
  file.OpenFile(path, "wb+");
  file.WriteHeader();
  fill(file);
  file.GetIndex().WriteAllBuffersToFileStream(file.GetStream());
  file.CloseFile();
}

inline std::shared_ptr<QovJbf::StreamReader> OpenReader(const std::string& path) {
  QovJbf::JbFile file;
  file.OpenFile(path, "rb");
  return file.OpenStreamReader(kStream);
}

/// Writes `content` as stream `name` in pieces of `piece` bytes, with these block flags.
inline void PutInPieces(QovJbf::JbFile& file, const std::string& name, const std::string& content,
                        std::size_t piece, std::uint8_t flags) {
  for (std::size_t at = 0; at < content.size(); at += piece) {
    const std::string part = content.substr(at, piece);
    file.GetIndex().Put(name, part.data(), part.size());
    file.AddBlockTransformation(name, flags);
    file.GetIndex().FlushFrozen(file.GetStream());
  }
}

}  // namespace Qov::Test
