#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "IndexTable.h"

namespace QovJbf {

/// Reads the streams of a table. A stream of a file is loaded block by block: in memory are the
/// block at IndexStream::mReading and the blocks that reading has returned to.
class IndexReader {
 public:
  explicit IndexReader(IndexTable& table) : mTable(table) {}

  /// Reads the root index of `length` bytes at the current position of `file`, and the index blocks
  /// that it lists.
  static IndexTable ReadTable(std::FILE* file, std::uint32_t length);

  std::uint64_t GetReadingBlockIndex(const std::string& name);
  std::uint64_t GetReadingBlockIndex(const std::string& name, std::FILE* file);
  void Get(const std::string& name, void* target, std::uint64_t n);
  void Get(const std::string& name, void* target, std::uint64_t n, std::FILE* file);
  void SetStreamPosition(const std::string& name, std::uint64_t offset, std::FILE* file);

 private:
  std::uint32_t GetRawLength(std::uint64_t k, std::FILE* file);
  std::size_t FindBlock(IndexStream& stream, std::uint64_t offset, std::FILE* file);
  void LoadBlock(std::uint64_t k, std::FILE* file);
  void MoveReading(IndexStream& stream, std::size_t to);

  IndexTable& mTable;
};

}  // namespace QovJbf
