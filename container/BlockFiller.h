#pragma once

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>

#include "IndexTable.h"
#include "IndexWriter.h"

namespace QovJbf {

/// Puts bytes into the last block of a stream and adds blocks when they are full.
///
/// A block is filled in memory unless it is streamed. The bytes of a streamed block go in chunks to
/// the threads that compress them, and from there to the file; the table has only its length.
class BlockFiller {
 public:
  BlockFiller(IndexTable& table, IndexWriter& writer) : mTable(table), mWriter(writer) {}

  std::uint64_t GetWritingBlockIndex(const std::string& name);
  void Put(const std::string& name, const void* source, std::uint64_t n);
  void Put(const std::string& name, std::uint64_t n, const Index::PieceSource& source);

  /// Returns the block that a value can be encoded into.
  std::uint64_t GetOpenBlock(const std::string& name);
  /// Passes on the value that was encoded into block `k` if the block is streamed.
  void FinishValue(std::uint64_t k);

  void StreamToFile(const std::string& name, std::FILE* file);
  void StopWriting() { mpFile = nullptr; }

 private:
  std::uint64_t GetBlockForBytes(const std::string& name, std::uint64_t n);
  std::uint64_t FindRoom(std::uint64_t k, std::uint64_t n);
  void StreamBytes(std::uint64_t k, const void* bytes, std::uint64_t n);
  void Stream(std::uint64_t k, std::uint64_t n, const Index::PieceSource& source);
  std::span<unsigned char> WaitForSpace(std::uint64_t k, std::uint64_t n);

  IndexTable& mTable;
  IndexWriter& mWriter;
  std::FILE* mpFile = nullptr;  ///< The file of the streamed blocks.
};

}  // namespace QovJbf
