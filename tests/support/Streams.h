#pragma once

#include <fstream>
#include <map>
#include <string>

#include "Qov/Jbf/JbFile.h"
#include "support/Blocks.h"

namespace Qov::Test {

/// The uncompressed bytes of every stream of a container file.
using Streams = std::map<std::string, std::string>;

inline Streams ReadStreams(const std::string& path) {
  QovJbf::JbFile file;
  file.OpenFile(path, "rb");
  file.ReadIndex();
  Streams streams;
  for (const QovJbf::IndexItem& item : file.GetIndex().GetItems()) {
    if (item.mName.front() == '\v' || streams.contains(item.mName)) continue;
    const auto reader = file.OpenStreamReader(item.mName);
    std::string& bytes = streams[item.mName];
    bytes.resize(reader->GetLength());
    reader->Read(0, bytes.data(), bytes.size());
  }
  return streams;
}

/// Writes a container version to the header of a file.
inline void WriteVersion(const std::string& path, const std::string& version) {
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(8);
  file.write(version.c_str(), 4);
}

/// Writes the streams of `file` without compression.
inline void WriteTo(QovJbf::JbFile& file, const std::string& path,
                    const std::string& version = "1.3") {
  file.OpenFile(path, "wb+");
  file.WriteHeader();
  file.GetIndex().WriteAllBuffersToFileStream(file.GetStream());
  file.CloseFile();
  WriteVersion(path, version);
}

inline void WriteStreams(const std::string& path, const Streams& streams,
                         const std::string& version = "1.3") {
  QovJbf::JbFile file;
  for (const auto& [name, bytes] : streams) {
    file.GetIndex().GetWritingBlockIndex(name);
    if (!bytes.empty()) file.GetIndex().Put(name, bytes.data(), bytes.size());
  }
  WriteTo(file, path, version);
}

/// Returns the bytes of the only block of a stream as hex digits.
inline std::string StreamBytes(QovJbf::JbFile& file, const std::string& stream) {
  QovJbf::Index& index = file.GetIndex();
  return HexOf(index.GetBlock(index.GetBlockSizeLimiter(stream).mBlocks.front()));
}

}  // namespace Qov::Test
