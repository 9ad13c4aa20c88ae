#pragma once

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>

#include "Qov/Jbf/JbFile.h"
#include "support/Errors.h"
#include "support/ScopedEnvironment.h"
#include "support/Streams.h"
#include "support/TempDir.h"

namespace Qov::Test {

inline constexpr const char* kLimitVariable = "TELMORAX_MAX_RYX_BLOCK_SIZE";
inline constexpr const char* kGrowthVariable = "TELMORAX_DEFAULT_RYX_BLOCK_SIZE";

inline std::string ReadBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Makes a new file of it: emptying an old one is slow on journalling file systems.
inline void WriteBytes(const std::string& path, const std::string& bytes) {
  std::filesystem::remove(path);
  std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string ContentOf(const QovJbf::Block& block) {
  return {reinterpret_cast<const char*>(block.GetData()), block.GetSize()};
}

inline std::string HexOf(const QovJbf::Block& block) { return ToHex(ContentOf(block)); }

inline QovJbf::Block BlockOf(const std::string& bytes) {
  QovJbf::Block block;
  block.Put(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  block.SetPosition(0);
  return block;
}

/// The image of a number.
template <class T>
std::string Image(T value) {
  std::string bytes(sizeof value, '\0');
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

/// Bytes that compress, but not to nothing; the same for the same seed.
inline std::string SomeBytes(std::size_t n, unsigned seed) {
  std::mt19937 random(seed);
  std::string bytes(n, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random() % 16);
  return bytes;
}

/// Keeps what is written to standard error.
class CapturedError {
 public:
  CapturedError() : mBefore(std::cerr.rdbuf(mText.rdbuf())) {}
  ~CapturedError() { std::cerr.rdbuf(mBefore); }
  CapturedError(const CapturedError&) = delete;
  CapturedError& operator=(const CapturedError&) = delete;

  std::string Text() const { return mText.str(); }

 private:
  std::ostringstream mText;
  std::streambuf* mBefore;
};

/// Writes a container whose streams `fill` puts.
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

/// Writes `content` as stream `name` in pieces of `piece` bytes, with the flags of heavy data.
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
